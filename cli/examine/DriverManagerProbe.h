/// Which driver manager is installed.
#ifndef CLI_DRIVERMANAGERPROBE_H
#define CLI_DRIVERMANAGERPROBE_H

#include <string>

namespace Veltrane::Cli {

struct DriverManagerInfo {
    std::string m_library;  ///< path of the installer library of this process
    /// "2.3.11"; empty when it cannot be found out.
    std::string m_version;
    bool m_hasLockedRequests = false;  ///< 2.3.13 and later: a lock is held around setup libraries
    bool m_hasIodbc = false;           ///< iODBC's installer library can be loaded as well
};

DriverManagerInfo ProbeDriverManager();

}  // namespace Veltrane::Cli

#endif
