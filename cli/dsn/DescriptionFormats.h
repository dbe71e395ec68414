/// The two formats of descriptions; see Description.h. Internal.
#ifndef CLI_DESCRIPTIONFORMATS_H
#define CLI_DESCRIPTIONFORMATS_H

#include "cli/dsn/Description.h"

namespace Veltrane::Cli {

using Descriptions = std::vector<DsnDescription>;

Descriptions ParseJson(std::string_view in_text, const std::string& in_source);
Descriptions ParseIni(std::string_view in_text, const std::string& in_source,
                      std::vector<std::string>& out_notes);
std::string FormatJson(const Descriptions& in_descriptions);
std::string FormatIni(const Descriptions& in_descriptions);

/// Takes "present" or "absent".
/// @return false for anything else
bool ParseState(std::string_view in_text, bool& out_isAbsent);

}  // namespace Veltrane::Cli

#endif
