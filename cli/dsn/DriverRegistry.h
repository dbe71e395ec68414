/// The registered drivers: sections of odbcinst.ini, keys of the registry on Windows
/// (Setup/Profile.h). The driver manager's functions would drop the comments of the file. Read
/// once; used by one thread.
#ifndef CLI_DRIVERREGISTRY_H
#define CLI_DRIVERREGISTRY_H

#include <optional>
#include <string>
#include <vector>

#include "Setup/Profile.h"
#include "cli/dsn/DsnPlan.h"

namespace Veltrane::Cli {

class DriverRegistry : public ODBC::Profile {
public:
    DriverRegistry() : Profile(Kind::DRIVERS) {}

    /// Whether a driver can have this name. "ODBC" and "ODBC Drivers" are the driver manager's, and
    /// a backslash would lead to another registry key.
    static bool IsName(const std::string& in_driver);

    /// Returns the names of the drivers in file order.
    /// @throws ODBC::ProfileError with path and reason if they exist but cannot be read
    std::vector<std::string> GetNames() const;
    /// Returns the entries of a driver; nothing if it is not registered or the name is invalid.
    std::optional<Entries> Find(const std::string& in_driver) const;

    /// Adds, changes or removes the driver of the plan's name.
    /// @throws ODBC::ProfileError and CommandError EXIT_FAILED, with path and reason
    void CarryOut(const DsnPlan& in_plan) const;

private:
    const ODBC::ProfileView& View() const;

    mutable std::optional<ODBC::ProfileView> m_view;
};

/// Returns a driver's entry as the driver manager reads it: on Linux "Setup64" before "Setup".
std::string GetLibraryEntry(const Entries& in_driver, const std::string& in_key);

}  // namespace Veltrane::Cli

#endif
