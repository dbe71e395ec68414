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

void DriverRegistry::Register(const std::string& in_driver, const Entries& in_entries) const {
    for (const auto& [key, value] : in_entries) {
        if (ODBC::OdbcIniLine::IsCarriableLine(key, value)) continue;
        FailWith(key + ": No driver can have this value.");
    }
    Write([&](ODBC::ProfileChange& io_change) {
        for (const auto& [key, value] : in_entries) io_change.Set(in_driver, key, value);
        // The list comes last: a driver in the list has its libraries.
        io_change.ListDriver(in_driver);
    });
}

void DriverRegistry::Unregister(const std::string& in_driver) const {
    Write([&](ODBC::ProfileChange& io_change) { io_change.RemoveSection(in_driver); });
}

void DriverRegistry::Write(const std::function<void(ODBC::ProfileChange&)>& in_plan) const {
    for (const auto& [section, reason] : Change(in_plan)) FailWith(section + ": " + reason);
}

std::string GetLibraryEntry(const Entries& in_driver, const std::string& in_key) {
    const std::string forThisSize = sizeof(void*) == 8 ? in_driver.Get(in_key + "64") : "";
    return forThisSize.empty() ? in_driver.Get(in_key) : forThisSize;
}

}  // namespace Veltrane::Cli
