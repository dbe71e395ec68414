/// The drivers that are registered: sections of odbcinst.ini, keys of the registry on Windows
/// (Setup/Profile.h). The driver manager's own functions would drop every comment of the file.
/// Read once; used by one thread.
#ifndef CLI_DRIVERREGISTRY_H
#define CLI_DRIVERREGISTRY_H

#include <optional>
#include <string>
#include <vector>

#include "Setup/Profile.h"
#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

class DriverRegistry {
public:
    /// The file that the driver manager reads: $ODBCINSTINI in the directory of the system's files.
    DriverRegistry();

    const std::string& GetPath() const { return m_profile.GetPath(); }

    /// Whether a driver may have this name. "ODBC" and "ODBC Drivers" are the driver manager's, and
    /// a backslash would lead to another key of the registry.
    static bool IsName(const std::string& in_driver);

    /// The names of the drivers in the order of the file.
    /// @throws ODBC::ProfileError with path and reason when they are there but unreadable
    std::vector<std::string> GetNames() const;
    /// The entries of a driver; nothing when it is not registered, or when this is no name.
    std::optional<Entries> Find(const std::string& in_driver) const;

    /// Sets the entries of a driver, which is added when it is new.
    /// @throws ODBC::ProfileError and CommandError EXIT_FAILED, with path and reason
    void Register(const std::string& in_driver, const Entries& in_entries) const;
    void Unregister(const std::string& in_driver) const;

private:
    const ODBC::ProfileView& View() const;
    void Change(const std::function<void(ODBC::ProfileChange&)>& in_plan) const;

    ODBC::Profile m_profile;
    mutable std::optional<ODBC::ProfileView> m_view;
};

/// The value of a driver's entry as the driver manager takes it: on Linux "Setup64" before "Setup".
std::string GetLibraryEntry(const Entries& in_driver, const std::string& in_key);

}  // namespace Veltrane::Cli

#endif
