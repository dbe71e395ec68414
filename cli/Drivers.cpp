#include "cli/Drivers.h"

#include <odbcinst.h>

#include <algorithm>
#include <cstdlib>

#include "cli/DriverManager.h"
#include "cli/ProfileFile.h"
#include "cli/Values.h"

namespace Veltrane::Cli {

namespace {

constexpr int VALUE_BUFFER_SIZE = 4096;
constexpr int LIST_BUFFER_SIZE = 1 << 16;

}  // namespace

std::string DriversFile() {
    const std::string profile = ProfilePath(Scope::System);
    const char* const name = std::getenv("ODBCINSTINI");
    return profile.substr(0, profile.find_last_of('/') + 1) +
           (name != nullptr && *name != '\0' ? name : "odbcinst.ini");
}

std::vector<std::string> ListDrivers() {
    std::vector<char> buffer(LIST_BUFFER_SIZE);
    WORD length = 0;
    std::vector<std::string> names;
    if (SQLGetInstalledDrivers(buffer.data(), static_cast<WORD>(buffer.size() - 1), &length)) {
        for (const char* name = buffer.data(); *name != '\0'; name += names.back().size() + 1) {
            names.emplace_back(name);
        }
    }
    return names;
}

bool IsDriverRegistered(const std::string& in_name) {
    const std::vector<std::string> names = ListDrivers();
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return IsSameKey(name, in_name); });
}

std::string ReadDriverValue(const std::string& in_name, const std::string& in_key) {
    char buffer[VALUE_BUFFER_SIZE] = "";
    SQLGetPrivateProfileString(in_name.c_str(), in_key.c_str(), "", buffer, sizeof buffer,
                               DriversFile().c_str());
    return buffer;
}

std::string SetupLibraryOf(const std::string& in_name) {
    const std::string wide = ReadDriverValue(in_name, "Setup64");
    return wide.empty() ? ReadDriverValue(in_name, "Setup") : wide;
}

void RegisterDriver(const std::string& in_name, const Values& in_values) {
    if (IsDriverRegistered(in_name)) {
        for (const auto& [key, value] : in_values) {
            if (!SQLWritePrivateProfileString(in_name.c_str(), key.c_str(), value.c_str(),
                                              DriversFile().c_str())) {
                ThrowInstallerErrors(DriversFile());
            }
        }
        return;
    }
    std::string description = in_name + '\0';
    for (const auto& [key, value] : in_values) {
        description += key + "=" + value + '\0';
    }
    char path[VALUE_BUFFER_SIZE] = "";
    WORD length = 0;
    DWORD count = 0;
    if (!SQLInstallDriverEx(description.c_str(), nullptr, path, sizeof path, &length,
                            ODBC_INSTALL_COMPLETE, &count)) {
        ThrowInstallerErrors(DriversFile());
    }
}

unsigned UnregisterDriver(const std::string& in_name) {
    DWORD count = 0;
    if (!SQLRemoveDriver(in_name.c_str(), 0, &count)) {
        ThrowInstallerErrors(DriversFile());
    }
    return static_cast<unsigned>(count);
}

}  // namespace Veltrane::Cli
