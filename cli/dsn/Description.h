/// Descriptions of DSNs, which apply reads and export writes: JSON or INI, in UTF-8 here.
#ifndef CLI_DESCRIPTION_H
#define CLI_DESCRIPTION_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/dsn/DsnPlan.h"

namespace Veltrane::Cli {

/// An empty driver means the driver of the command.
struct DsnDescription : DsnWish {
    std::string m_state;        ///< "present", "absent" or empty
    std::string m_pwdVariable;  ///< source of the password; empty: none
    std::string m_pwdFile;

    bool IsAbsent() const { return m_state == "absent"; }
};

using Descriptions = std::vector<DsnDescription>;

enum class DescriptionFormat { JSON, INI };

/// Guesses the format of a text. A JSON list and the first section of an INI file both begin with a
/// bracket, but no name of a DSN begins like a list of objects.
DescriptionFormat GuessFormat(std::string_view in_text);

/// @param in_source  the file's name for error texts
/// @param out_notes  receives sentences about ignored sections and about keys that look mistyped
/// @throws CommandError EXIT_FAILED, with source and place but without values, for an empty or
///         malformed text and for a repeated name
Descriptions ParseDescriptions(std::string_view in_text, DescriptionFormat in_format,
                               const std::string& in_source, std::vector<std::string>& out_notes);

std::string FormatDescriptions(const Descriptions& in_descriptions, DescriptionFormat in_format);

// The JSON of both.
Descriptions ParseJson(std::string_view in_text, const std::string& in_source);
std::string FormatJson(const Descriptions& in_descriptions);

/// Returns the text of "driver", "state", "pwd_env" or "pwd_file", in any case; else null.
std::string* FindMember(std::string_view in_name, DsnDescription& io_description);

}  // namespace Veltrane::Cli

#endif
