/// Descriptions of DSNs, as apply reads and export writes them: JSON or INI, here in UTF-8.
#ifndef CLI_DESCRIPTION_H
#define CLI_DESCRIPTION_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/dsn/DsnPlan.h"

namespace Veltrane::Cli {

/// An empty driver is the command's.
struct DsnDescription : DsnWish {
    std::string m_state;        ///< "present", "absent" or empty
    std::string m_pwdVariable;  ///< where the password is to be taken from; empty: nowhere
    std::string m_pwdFile;

    bool IsAbsent() const { return m_state == "absent"; }
};

enum class DescriptionFormat { JSON, INI };

/// What the text looks like. A list of JSON and the first section of an INI file both begin with a
/// bracket, but a DSN's name does not begin with what is in a list of objects.
DescriptionFormat GuessFormat(std::string_view in_text);

/// @param in_source  the file's name for error texts
/// @param out_notes  gets sentences on what is passed over and on keys that look mistyped
/// @throws CommandError EXIT_FAILED for an empty or malformed text and for a name given
///         twice, with source and place, never with a value
std::vector<DsnDescription> ParseDescriptions(std::string_view in_text, DescriptionFormat in_format,
                                              const std::string& in_source,
                                              std::vector<std::string>& out_notes);

std::string FormatDescriptions(const std::vector<DsnDescription>& in_descriptions,
                               DescriptionFormat in_format);

}  // namespace Veltrane::Cli

#endif
