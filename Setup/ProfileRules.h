/// The driver managers' rules for their files, for setup requests and for Profile (Linux).
#ifndef SETUP_PROFILERULES_H
#define SETUP_PROFILERULES_H

#include <sys/stat.h>

#include <string_view>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniText.h"

namespace Veltrane::ODBC::ProfileRules {

/// A user's file can hold passwords.
inline constexpr mode_t NEW_USER_FILE = 0600;
/// The system's file is readable for every user; the administrator's umask can narrow that.
inline constexpr mode_t NEW_SYSTEM_FILE = 0644;

inline bool IsIodbc() { return GetInstallerLibrary().m_driverManager == DriverManager::IODBC; }

/// How the driver manager reads the only file or the first.
inline OdbcIniText::Rules RulesOf(bool in_isIodbc) {
    return in_isIodbc ? OdbcIniText::Rules::IODBC : OdbcIniText::Rules::FIRST_FILE;
}

/// The section in which iODBC lists the data sources of a file, each with its driver.
inline constexpr char LIST_OF_DATA_SOURCES[] = "ODBC Data Sources";

inline bool IsListed(OdbcIniText::Rules in_rules, std::string_view in_dsn) {
    return in_rules == OdbcIniText::Rules::IODBC && in_dsn != "Default";
}

/// Whether a file can hold this data source. In a file that lists its data sources, the name is
/// also a key.
inline bool CanHold(OdbcIniText::Rules in_rules, std::string_view in_dsn,
                    std::string_view in_driver) {
    return OdbcIniLine::IsCarriableSection(in_dsn) &&
           OdbcIniLine::IsCarriableLine("Driver", in_driver, in_rules) &&
           (!IsListed(in_rules, in_dsn) ||
            OdbcIniLine::IsCarriableLine(in_dsn, in_driver, in_rules));
}

/// Adds a data source with only the key "Driver", in the place of an old one.
inline void AddDataSource(OdbcIniText& io_text, std::string_view in_dsn,
                          std::string_view in_driver) {
    if (IsListed(io_text.GetRules(), in_dsn)) io_text.Set(LIST_OF_DATA_SOURCES, in_dsn, in_driver);
    io_text.RemoveSection(in_dsn);
    io_text.Set(in_dsn, "Driver", in_driver);
}

inline void RemoveDataSource(OdbcIniText& io_text, std::string_view in_dsn) {
    if (IsListed(io_text.GetRules(), in_dsn)) io_text.RemoveKey(LIST_OF_DATA_SOURCES, in_dsn);
    io_text.RemoveSection(in_dsn);
}

/// The driver manager reads nothing of such a file.
inline constexpr char UNREADABLE[] =
    "text before the first section makes the whole file unreadable for the driver manager";

}  // namespace Veltrane::ODBC::ProfileRules

#endif
