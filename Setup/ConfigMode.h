/// The config mode of a request (Linux).
#ifndef SETUP_CONFIGMODE_H
#define SETUP_CONFIGMODE_H

namespace Veltrane::ODBC {

struct InstallerLibrary;

/// Whose data sources a request is about. The values are those of SQLGetConfigMode.
enum class ConfigMode { BOTH = 0, USER = 1, SYSTEM = 2, UNKNOWN = -1 };

/// The config mode of the request that is running; UNKNOWN when it cannot be found out.
ConfigMode FindConfigMode();

/// For where the installer library cannot be asked: from unixODBC 2.3.13 on SQLGetConfigMode waits
/// for ever inside ConfigDSN. Lets the library read a profile and watches which files it opens for
/// that: the user's in mode USER, the system's in mode SYSTEM, both in mode BOTH. When none was
/// opened and only one of them cannot be, it is that one's mode. Takes 6 to 20 ms, most of them in
/// closing the watch: the system lets go of one that slowly.
/// @return UNKNOWN when opening files cannot be watched
ConfigMode ProbeConfigMode(const InstallerLibrary& in_library);

}  // namespace Veltrane::ODBC

#endif
