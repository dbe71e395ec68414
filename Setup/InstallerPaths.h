/// Where the driver manager's odbc.ini files are (Linux).
#ifndef SETUP_INSTALLERPATHS_H
#define SETUP_INSTALLERPATHS_H

#include <string>

namespace Veltrane::ODBC {

/// Whether this process runs with more rights than its user has (set-user-id and the like).
bool IsPrivileged() noexcept;

/// The path of the user's odbc.ini and of the system's, whether they exist or not, by the rules of
/// the driver manager. A process that runs with more rights than its user has takes neither from
/// the environment.
std::string GetUserIniPath();
std::string GetSystemIniPath();

}  // namespace Veltrane::ODBC

#endif
