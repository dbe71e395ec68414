#include "cli/Drivers.h"

#include <odbcinst.h>

#include <algorithm>

#include "cli/Values.h"

namespace Veltrane::Cli {

namespace {

constexpr int VALUE_BUFFER_SIZE = 4096;
constexpr int LIST_BUFFER_SIZE = 1 << 16;

}  // namespace

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
                               "odbcinst.ini");
    return buffer;
}

}  // namespace Veltrane::Cli
