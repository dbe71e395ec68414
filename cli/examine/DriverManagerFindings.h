/// Examines the installed driver manager, its known defects, and the environment.
#ifndef CLI_DRIVERMANAGERFINDINGS_H
#define CLI_DRIVERMANAGERFINDINGS_H

#include <string>

#include "cli/examine/Finding.h"

namespace Veltrane::Cli {

struct DriverManagerInfo {
    std::string m_library;  ///< path of the installer library of this process
    /// "2.3.11"; empty if unknown.
    std::string m_version;
    bool m_hasLockedRequests = false;  ///< 2.3.13 and later: holds a lock around setup libraries
    bool m_hasIodbc = false;           ///< iODBC's installer library can be loaded too
};

DriverManagerInfo ProbeDriverManager();

/// Returns the known defects of this version of the driver manager, and its version as a note.
Findings ExamineDriverManager(const DriverManagerInfo& in_info);

/// Reports environment variables that send the driver manager to other files.
Findings ExamineEnvironment();

}  // namespace Veltrane::Cli

#endif
