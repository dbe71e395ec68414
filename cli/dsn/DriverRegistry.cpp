#include "cli/dsn/DriverRegistry.h"

#include "Setup/OdbcIniLine.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

bool DriverRegistry::IsName(const std::string& in_driver) {
    return !in_driver.empty() && in_driver.find('\\') == std::string::npos &&
           !EqualsIgnoringCase(in_driver, "ODBC") && !EqualsIgnoringCase(in_driver, "ODBC Drivers");
}

const ODBC::ProfileView& DriverRegistry::View() const {
    if (!m_view) m_view = Read();
    return *m_view;
}

std::vector<std::string> DriverRegistry::GetNames() const {
    std::vector<std::string> names;
    for (std::string& name : View().GetDrivers()) {
        if (IsName(name)) names.push_back(std::move(name));
    }
    return names;
}

std::optional<Entries> DriverRegistry::Find(const std::string& in_driver) const {
    if (!IsName(in_driver) || !View().HasSection(in_driver)) return std::nullopt;
    return Entries(View().GetKeyValues(in_driver));
}

void DriverRegistry::CarryOut(const DsnPlan& in_plan) const {
    const auto edit = [&](ODBC::ProfileChange& io_change) {
        if (in_plan.m_action == Action::Remove) return io_change.RemoveSection(in_plan.m_name);
        for (const KeyChange& it : in_plan.m_changes) {
            if (!ODBC::OdbcIniLine::IsCarriableLine(it.m_key, *it.m_after)) {
                FailWith(it.m_key + ": No driver can have this value.");
            }
            io_change.Set(in_plan.m_name, it.m_key, *it.m_after);
        }
        // The list comes last: a driver in the list has its libraries.
        io_change.ListDriver(in_plan.m_name);
    };
    for (const auto& [section, reason] : Change(edit)) FailWith(section + ": " + reason);
}

std::string GetLibraryEntry(const Entries& in_driver, const std::string& in_key) {
    const std::string forThisSize = sizeof(void*) == 8 ? in_driver.Get(in_key + "64") : "";
    return forThisSize.empty() ? in_driver.Get(in_key) : forThisSize;
}

}  // namespace Veltrane::Cli
