#include "cli/dsn/DriverRegistry.h"

namespace Veltrane::Cli {

bool DriverRegistry::IsName(const std::string& in_driver) {
    return !in_driver.empty() && in_driver.find('\\') == std::string::npos &&
           !EqualsIgnoringCase(in_driver, "ODBC") && !EqualsIgnoringCase(in_driver, "ODBC Drivers");
}

}  // namespace Veltrane::Cli
