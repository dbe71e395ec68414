/// The drivers that are registered with the driver manager, through its own functions.
#ifndef CLI_DRIVERS_H
#define CLI_DRIVERS_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

/// The names in odbcinst.ini.
std::vector<std::string> ListDrivers();
/// Names compare without regard to ASCII case.
bool IsDriverRegistered(const std::string& in_name);
/// A value of a driver's section; empty when there is none.
std::string ReadDriverValue(const std::string& in_name, const std::string& in_key);

}  // namespace Veltrane::Cli

#endif
