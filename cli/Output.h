/// What the commands print: text for people, or JSON.
#ifndef CLI_OUTPUT_H
#define CLI_OUTPUT_H

#include <nlohmann/json.hpp>
#include <string>

#include "cli/Change.h"

namespace Veltrane::Cli {

using Json = nlohmann::ordered_json;

struct OutputOptions {
    bool m_isJson = false;
    bool m_isQuiet = false;
    bool m_hasSecrets = false;  ///< secrets are shown
    bool m_isDryRun = false;
};

/// The value, or a mask in place of a secret.
std::string Shown(const OutputOptions& in_options, const std::string& in_key,
                  const std::string& in_value);

/// One DSN's result: the difference is shown when nothing is done, or in JSON.
void PrintChange(const OutputOptions& in_options, const Change& in_change);
Json ChangeToJson(const OutputOptions& in_options, const Change& in_change);

/// Prints on one line; bytes that are no UTF-8 are replaced.
void PrintJson(const Json& in_json);

}  // namespace Veltrane::Cli

#endif
