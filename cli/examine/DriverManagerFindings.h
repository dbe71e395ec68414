/// Which driver manager is installed, and what is known to be wrong with it and with the
/// environment.
#ifndef CLI_DRIVERMANAGERFINDINGS_H
#define CLI_DRIVERMANAGERFINDINGS_H

#include <string>

#include "cli/examine/Finding.h"

namespace Veltrane::Cli {

struct DriverManagerInfo {
    std::string m_library;  ///< path of the installer library of this process
    /// "2.3.11"; empty when it cannot be found out.
    std::string m_version;
    bool m_hasLockedRequests = false;  ///< 2.3.13 and later: a lock is held around setup libraries
    bool m_hasIodbc = false;           ///< iODBC's installer library can be loaded as well
};

DriverManagerInfo ProbeDriverManager();

/// The defects that this version of the driver manager is known for, and its version as a note.
Findings ExamineDriverManager(const DriverManagerInfo& in_info);

/// The environment variables that send the driver manager to other files.
Findings ExamineEnvironment();

}  // namespace Veltrane::Cli

#endif
