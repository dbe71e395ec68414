/// The drivers that are registered with the driver manager, through its own functions.
#ifndef CLI_DRIVERS_H
#define CLI_DRIVERS_H

#include <string>
#include <vector>

#include "cli/Values.h"

namespace Veltrane::Cli {

/// The names in odbcinst.ini.
std::vector<std::string> ListDrivers();
/// Names compare without regard to ASCII case.
bool IsDriverRegistered(const std::string& in_name);
/// The path of the file that lists them.
std::string DriversFile();
/// A value of a driver's section; empty when there is none.
std::string ReadDriverValue(const std::string& in_name, const std::string& in_key);

/// The library of the setup component of a driver: the value that the driver manager takes.
std::string SetupLibraryOf(const std::string& in_name);

/// Registers a driver, or sets the keys of one that is registered.
/// @param in_values  keys of the driver's section, such as "Setup"
/// @throws InstallerError
void RegisterDriver(const std::string& in_name, const Values& in_values);

/// Takes one registration back.
/// @return how many are left; the driver stays registered as long as there are any
/// @throws InstallerError
unsigned UnregisterDriver(const std::string& in_name);

}  // namespace Veltrane::Cli

#endif
