#include "cli/DriverCommands.h"

#include <iostream>

#include "cli/Drivers.h"
#include "cli/LibraryCheck.h"
#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

namespace {

std::string DriverOf(const Options& in_options) {
    return in_options.m_driver.empty() ? DEFAULT_DRIVER : in_options.m_driver;
}

void PrintResult(const Options& in_options, const std::string& in_result) {
    if (in_options.m_output.m_isJson) {
        PrintJson({{"driver", DriverOf(in_options)}, {"result", in_result}});
    } else {
        std::cout << DriverOf(in_options) << ": " << in_result << "\n";
    }
}

}  // namespace

void RegisterTheDriver(const Options& in_options) {
    const std::string driver = DriverOf(in_options);
    if (IsDriverRegistered(driver) && !in_options.m_isReplace) {
        throw CommandError(
            EXIT_EXISTS,
            "The driver \"" + driver + "\" is registered already. Use --replace to change it.");
    }
    const std::string fault = FindLibraryFault(in_options.m_setupLibrary, "ConfigDSN");
    if (!fault.empty()) {
        throw CommandError(EXIT_FAILED, fault);
    }
    Values values;
    values.Set("Description", "Veltrane ODBC driver");
    values.Set("Setup", in_options.m_setupLibrary);
    if (!in_options.m_driverLibrary.empty()) {
        values.Set("Driver", in_options.m_driverLibrary);
    }
    RegisterDriver(driver, values);
    PrintResult(in_options, "registered");
}

void UnregisterTheDriver(const Options& in_options) {
    const std::string driver = DriverOf(in_options);
    if (!IsDriverRegistered(driver)) {
        throw CommandError(EXIT_NOT_FOUND, "The driver \"" + driver + "\" is not registered.");
    }
    const unsigned left = UnregisterDriver(driver);
    PrintResult(in_options,
                left == 0 ? "unregistered" : "still registered " + std::to_string(left) + " times");
}

void PrintDrivers(const Options& in_options) {
    Json json = Json::array();
    for (const std::string& name : ListDrivers()) {
        const std::string setup = SetupLibraryOf(name);
        json.push_back({{"name", name}, {"setup", setup}});
        if (!in_options.m_output.m_isJson) {
            std::cout << name << (setup.empty() ? "" : " (setup: " + setup + ")") << "\n";
        }
    }
    if (in_options.m_output.m_isJson) {
        PrintJson(json);
    }
}

void PrintPlaces(const Options& in_options) {
    const Json places{{"user", ProfilePath(Scope::User)},
                      {"system", ProfilePath(Scope::System)},
                      {"drivers", DriversFile()},
                      {"setup", SetupLibraryOf(DriverOf(in_options))}};
    if (in_options.m_output.m_isJson) {
        PrintJson(places);
        return;
    }
    std::cout << "user DSNs:     " << places["user"].get<std::string>() << "\n"
              << "system DSNs:   " << places["system"].get<std::string>() << "\n"
              << "drivers:       " << places["drivers"].get<std::string>() << "\n"
              << "setup library: " << places["setup"].get<std::string>() << "\n";
}

}  // namespace Veltrane::Cli
