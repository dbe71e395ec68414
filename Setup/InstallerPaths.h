/// Where the driver manager's odbc.ini files are (Linux).
#ifndef SETUP_INSTALLERPATHS_H
#define SETUP_INSTALLERPATHS_H

#include <string>

namespace Veltrane::ODBC {

/// Whether this process runs with more rights than its user has (set-user-id and the like).
bool IsPrivileged() noexcept;

/// Return the path of the user's and of the system's odbc.ini by the driver manager's rules, even
/// if the file does not exist. A process with more rights than its user ignores the environment.
std::string GetUserIniPath();
std::string GetSystemIniPath();

}  // namespace Veltrane::ODBC

#endif
