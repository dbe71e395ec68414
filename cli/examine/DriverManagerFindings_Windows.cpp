#include "cli/examine/DriverManagerFindings.h"

namespace Veltrane::Cli {

Findings ExamineDriverManager(const DriverManagerInfo& in_info) {
    const std::string version =
        in_info.m_version.empty() ? "of an unknown version" : in_info.m_version;
    return {{Severity::Note, "manager-version",
             "The ODBC installer is " + in_info.m_library + ", " + version + ".",
             "Nothing has to be done."}};
}

/// No variable sends the installer to other keys.
Findings ExamineEnvironment() { return {}; }

}  // namespace Veltrane::Cli
