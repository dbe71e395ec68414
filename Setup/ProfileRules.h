/// The rules of the driver managers for their files that the library's requests and Profile share
/// (Linux).
#ifndef SETUP_PROFILERULES_H
#define SETUP_PROFILERULES_H

#include <sys/stat.h>

#include <string>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniText.h"

namespace Veltrane::ODBC::ProfileRules {

/// A user's file may hold passwords.
inline constexpr mode_t NEW_USER_FILE = 0600;
/// What is the system's is for every user; the umask of the administrator may narrow it.
inline constexpr mode_t NEW_SYSTEM_FILE = 0644;

/// The section in which iODBC lists the data sources of a file, each with its driver.
inline constexpr char LIST_OF_DATA_SOURCES[] = "ODBC Data Sources";

inline bool IsIodbc() { return GetInstallerLibrary().m_driverManager == DriverManager::IODBC; }

/// How the driver manager reads a file that is the only or first one.
inline OdbcIniText::Rules RulesOf(bool in_isIodbc) {
    return in_isIodbc ? OdbcIniText::Rules::IODBC : OdbcIniText::Rules::FIRST_FILE;
}

/// The data source of this name is not in the list.
inline bool IsListed(bool in_isIodbc, const std::string& in_dsn) {
    return in_isIodbc && in_dsn != "Default";
}

/// The driver manager reads nothing of such a file.
inline constexpr char UNREADABLE[] = "text before the first section";

}  // namespace Veltrane::ODBC::ProfileRules

#endif
