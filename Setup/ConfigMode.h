/// The config mode of a request (Linux).
#ifndef SETUP_CONFIGMODE_H
#define SETUP_CONFIGMODE_H

namespace Veltrane::ODBC {

struct InstallerLibrary;

/// The data sources that a request is about. The values are those of SQLGetConfigMode.
enum class ConfigMode { BOTH = 0, USER = 1, SYSTEM = 2, UNKNOWN = -1 };

/// Returns the config mode of the running request, UNKNOWN when it cannot be determined.
ConfigMode FindConfigMode();

/// Determines the config mode without SQLGetConfigMode, which waits for ever inside ConfigDSN from
/// unixODBC 2.3.13 on. Lets the library read a profile and watches which files it opens: the user's
/// in mode USER, the system's in mode SYSTEM, both in mode BOTH. If it opens none and exactly one
/// of them cannot be opened, the mode is that file's. Needs 6 to 20 ms, mostly for closing the
/// watch, which the kernel does slowly.
/// @return UNKNOWN when files cannot be watched, or when nothing tells the modes apart
ConfigMode ProbeConfigMode(const InstallerLibrary& in_library);

}  // namespace Veltrane::ODBC

#endif
