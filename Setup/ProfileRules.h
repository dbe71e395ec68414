/// The rules of the driver managers for their files, which the library's requests and Profile share
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

inline bool IsIodbc() { return GetInstallerLibrary().m_driverManager == DriverManager::IODBC; }

/// How the driver manager reads a file that is the only or first one.
inline OdbcIniText::Rules RulesOf(bool in_isIodbc) {
    return in_isIodbc ? OdbcIniText::Rules::IODBC : OdbcIniText::Rules::FIRST_FILE;
}

/// The section in which iODBC lists the data sources of a file, each with its driver.
inline constexpr char LIST_OF_DATA_SOURCES[] = "ODBC Data Sources";

inline bool IsListed(OdbcIniText::Rules in_rules, const std::string& in_dsn) {
    return in_rules == OdbcIniText::Rules::IODBC && in_dsn != "Default";
}

/// Whether a file can hold a data source of that name, which is a key too where it is listed.
inline bool CanHold(OdbcIniText::Rules in_rules, const std::string& in_dsn,
                    const std::string& in_driver) {
    return OdbcIniLine::IsCarriableSection(in_dsn) &&
           OdbcIniLine::IsCarriableLine("Driver", in_driver, in_rules) &&
           (!IsListed(in_rules, in_dsn) ||
            OdbcIniLine::IsCarriableLine(in_dsn, in_driver, in_rules));
}

/// Adds a data source, at the place of an old one, with the key "Driver" alone.
inline void AddDataSource(OdbcIniText& io_text, const std::string& in_dsn,
                          const std::string& in_driver) {
    if (IsListed(io_text.GetRules(), in_dsn)) io_text.Set(LIST_OF_DATA_SOURCES, in_dsn, in_driver);
    io_text.RemoveSection(in_dsn);
    io_text.Set(in_dsn, "Driver", in_driver);
}

inline void RemoveDataSource(OdbcIniText& io_text, const std::string& in_dsn) {
    if (IsListed(io_text.GetRules(), in_dsn)) io_text.RemoveKey(LIST_OF_DATA_SOURCES, in_dsn);
    io_text.RemoveSection(in_dsn);
}

/// The driver manager reads nothing of such a file.
inline constexpr char UNREADABLE[] =
    "text before the first section makes the whole file unreadable for the driver manager";

}  // namespace Veltrane::ODBC::ProfileRules

#endif
