/// The findings of an examination of the machine's ODBC set-up.
#ifndef CLI_FINDING_H
#define CLI_FINDING_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace Veltrane::Cli {

/// Error: DSNs of the driver do not work. Warning: they may fail or be unsafe.
enum class Severity { Error, Warning, Note };

struct Finding {
    Severity m_severity;
    std::string m_id;      ///< for programs: "driver-not-registered"
    std::string m_text;    ///< a sentence that says what is wrong and where
    std::string m_repair;  ///< a sentence on how to repair it
};

using Findings = std::vector<Finding>;

/// "error", "warning", "note"
inline const char* GetSeverityName(Severity in_severity) {
    constexpr const char* NAMES[] = {"error", "warning", "note"};
    return NAMES[static_cast<std::size_t>(in_severity)];
}

bool HasError(const Findings& in_findings);
nlohmann::ordered_json ToJson(const Findings& in_findings);
/// Prints each with its repair, at most 80 columns wide.
void PrintFindings(const Findings& in_findings);

}  // namespace Veltrane::Cli

#endif
