/// Connection strings: "Key=Value;Key={a;b}".
#ifndef CLI_CONNECTIONSTRING_H
#define CLI_CONNECTIONSTRING_H

#include <string_view>

#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

/// Parses a connection string. Blanks around keys and values do not count. A value in braces can
/// hold any text; a closing brace in it is doubled. If a key occurs twice, the first one counts, as
/// for the driver manager.
/// @throws CommandError EXIT_USAGE with the position in bytes, never with a value
Entries ParseConnectionString(std::string_view in_text);

std::string FormatConnectionString(const Entries& in_entries);
/// Returns the text for a value within braces: closing braces are doubled.
std::string DoubleBraces(const std::string& in_value);

}  // namespace Veltrane::Cli

#endif
