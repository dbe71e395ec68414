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

/// Returns the text of "driver", "state", "pwd_env" or "pwd_file", in any case; else null.
std::string* FindMember(std::string_view in_name, DsnDescription& io_description);

}  // namespace Veltrane::Cli

#endif
