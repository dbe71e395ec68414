/// Makes the texts of --help from the table of commands, at most 80 columns wide.
#ifndef CLI_HELPTEXT_H
#define CLI_HELPTEXT_H

#include <string>
#include <string_view>

#include "cli/line/CommandTable.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

/// Breaks a text at blanks into lines of at most 80 columns; each line begins with `in_indent`
/// blanks.
std::string Wrap(std::string_view in_text, std::size_t in_indent);

std::string MakeOverview();
std::string MakeHelp(const CommandInfo& in_command);
std::string MakeVersionText();

/// "veltrane-dsn set NAME [OPTION...]"
std::string MakeUsage(const CommandInfo& in_command);
/// "-p, --property KEY=VALUE"
std::string MakeOptionTitle(const OptionInfo& in_option);

}  // namespace Veltrane::Cli

#endif
