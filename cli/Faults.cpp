#include "cli/Faults.h"

#include "cli/Drivers.h"

namespace Veltrane::Cli {

namespace {

/// The setup component reads no more characters of a stored value.
constexpr std::size_t MAX_LOADED = 259;
}  // namespace

std::vector<std::string> FindFaults(const std::string& in_name, const Values& in_section) {
    std::vector<std::string> faults;
    const std::string* const driver = in_section.Find("Driver");
    if (driver == nullptr || driver->empty()) {
        faults.push_back("It names no driver. Set one: veltrane-dsn set " + in_name +
                         " --driver NAME.");
    } else if (driver->front() != '/' && !IsDriverRegistered(*driver)) {
        faults.push_back("The driver \"" + *driver +
                         "\" is not registered. Register it: " + "veltrane-dsn driver register.");
    }
    for (const char* key : {"Server", "Database"}) {
        const std::string* const value = in_section.Find(key);
        if (value == nullptr || value->empty()) {
            faults.push_back(std::string("It has no ") + key + ". Set it: veltrane-dsn set " +
                             in_name + " -p " + key + "=VALUE.");
        }
    }
    for (const auto& [key, value] : in_section) {
        if (IsKnown(key) && value.size() > MAX_LOADED) {
            faults.push_back("The value of " + key + " is longer than 259 bytes, and editors may " +
                             "cut it. Shorten it.");
        }
        const bool isComment = !value.empty() && (value.front() == ';' || value.front() == '#');
        if (isComment || value.find(" ;") != std::string::npos ||
            value.find(" #") != std::string::npos) {
            faults.push_back("The value of " + key + " holds what iODBC takes for a comment. " +
                             "Avoid ; and # at its begin and behind a blank.");
        }
    }
    return faults;
}

}  // namespace Veltrane::Cli
