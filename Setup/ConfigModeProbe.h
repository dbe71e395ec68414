/// Finds the config mode where the installer library cannot be asked for it: from unixODBC 2.3.13
/// on SQLGetConfigMode waits for ever inside ConfigDSN.
#ifndef SETUP_CONFIGMODEPROBE_H
#define SETUP_CONFIGMODEPROBE_H

#include "Setup/InstallerLibrary.h"

namespace Veltrane::ODBC {

/// Lets the library read a profile and watches which files it opens for that: the user's in mode
/// USER, the system's in mode SYSTEM, both in mode BOTH.
/// When none was opened and only one of them cannot be, it is that one's mode.
/// Takes 6 to 20 ms, most of them in closing the watch: the system lets go of one that slowly.
/// @return UNKNOWN when opening files cannot be watched
ConfigMode ProbeConfigMode(const InstallerLibrary& in_library);

}  // namespace Veltrane::ODBC

#endif
