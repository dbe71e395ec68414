#include "Setup/OdbcIniText.h"
#include "VeltraneDialog/WideText_Windows.h"
#include "cli/dsn/DriverRegistry.h"
#include "cli/dsn/RegistryRoot_Windows.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

/// The list of the drivers, in which each has the value "Installed".
constexpr char DRIVER_LIST[] = "ODBC Drivers";

void CheckDone(const RegistryRoot& in_root, unsigned long in_error) {
    if (in_error == 0) return;
    throw CommandError(
        EXIT_FAILED, in_root.GetName() + ": cannot write: " + ODBC::DescribeSystemError(in_error));
}

}  // namespace

DriverRegistry::DriverRegistry() : m_path(RegistryRoot::OfDrivers().GetName()) {}

std::vector<std::string> DriverRegistry::GetNames() const {
    std::vector<std::string> names;
    const RegistryRoot root = RegistryRoot::OfDrivers();
    RegistryRoot::Section list;
    if (!root.Read(DRIVER_LIST, list)) return names;
    for (const auto& [name, state] : list.m_entries) {
        if (EqualsIgnoringCase(state, "Installed")) names.push_back(name);
    }
    return names;
}

std::optional<Entries> DriverRegistry::Find(const std::string& in_driver) const {
    RegistryRoot::Section section;
    if (!IsName(in_driver) || !RegistryRoot::OfDrivers().Read(in_driver, section))
        return std::nullopt;
    return Entries(section.m_entries);
}

void DriverRegistry::Register(const std::string& in_driver, const Entries& in_entries) const {
    const RegistryRoot root = RegistryRoot::OfDrivers();
    for (const auto& [key, value] : in_entries) {
        if (!ODBC::OdbcIniText::IsCarriableLine(key, value)) {
            throw CommandError(EXIT_FAILED, key + ": No driver can have this value.");
        }
        CheckDone(root, root.Write(in_driver, key, value));
    }
    // Last: what is in the list has its libraries.
    CheckDone(root, root.Write(DRIVER_LIST, in_driver, "Installed"));
}

void DriverRegistry::Unregister(const std::string& in_driver) const {
    const RegistryRoot root = RegistryRoot::OfDrivers();
    CheckDone(root, root.RemoveValue(DRIVER_LIST, in_driver));
    CheckDone(root, root.RemoveSection(in_driver));
}

std::string GetLibraryEntry(const Entries& in_driver, const std::string& in_key) {
    return in_driver.Get(in_key);
}

}  // namespace Veltrane::Cli
