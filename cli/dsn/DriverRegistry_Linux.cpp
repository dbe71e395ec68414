#include <cerrno>
#include <cstdlib>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/OdbcIniUpdate.h"
#include "cli/dsn/DriverRegistry.h"
#include "cli/system/CommandError.h"
#include "cli/system/FreeSpace.h"

namespace Veltrane::Cli {

namespace {

constexpr mode_t NEW_FILE_MODE = 0644;

std::string FindPath() {
    const std::string system = ODBC::GetSystemIniPath();
    const char* const name = std::getenv("ODBCINSTINI");
    return system.substr(0, system.rfind('/') + 1) + (name == nullptr ? "odbcinst.ini" : name);
}

ODBC::OdbcIniText Load(const std::string& in_path) {
    ODBC::OdbcIniFile file(in_path);
    std::string bytes;
    struct stat status {};
    if (!file.Read(bytes, status)) {
        if (file.GetFailure().m_error == ENOENT) return {};
        throw CommandError(EXIT_FAILED, file.GetFailure().Describe());
    }
    return ODBC::OdbcIniText(std::move(bytes));
}

[[noreturn]] void FailToWrite(const std::string& in_path) {
    ODBC::OdbcIniFile file(in_path);
    std::string bytes;
    std::string reason = WhyNoRoomBeside(in_path);
    if (!file.Lock(bytes, NEW_FILE_MODE)) reason = file.GetFailure().Describe();
    throw CommandError(EXIT_FAILED, reason.empty() ? in_path + ": cannot write" : reason);
}

}  // namespace

DriverRegistry::DriverRegistry() : m_path(FindPath()) {}

std::vector<std::string> DriverRegistry::GetNames() const {
    std::vector<std::string> names;
    for (std::string& name : Load(m_path).GetSections()) {
        if (IsName(name)) names.push_back(std::move(name));
    }
    return names;
}

std::optional<Entries> DriverRegistry::Find(const std::string& in_driver) const {
    const ODBC::OdbcIniText text = Load(m_path);
    if (!IsName(in_driver) || !text.HasSection(in_driver)) return std::nullopt;
    return Entries(text.GetKeyValues(in_driver));
}

void DriverRegistry::Register(const std::string& in_driver, const Entries& in_entries) const {
    ODBC::OdbcIniUpdate update(m_path, NEW_FILE_MODE);
    for (const auto& [key, value] : in_entries) {
        if (!ODBC::OdbcIniText::IsCarriableLine(key, value)) {
            throw CommandError(EXIT_FAILED, key + ": No line of the file can hold this value.");
        }
        if (!update.Set(in_driver, key, value)) FailToWrite(m_path);
    }
    if (!update.Commit()) FailToWrite(m_path);
}

void DriverRegistry::Unregister(const std::string& in_driver) const {
    ODBC::OdbcIniUpdate update(m_path, NEW_FILE_MODE);
    if (!update.RemoveSection(in_driver) || !update.Commit()) FailToWrite(m_path);
}

std::string GetLibraryEntry(const Entries& in_driver, const std::string& in_key) {
    const std::string forThisSize = sizeof(void*) == 8 ? in_driver.Get(in_key + "64") : "";
    return forThisSize.empty() ? in_driver.Get(in_key) : forThisSize;
}

}  // namespace Veltrane::Cli
