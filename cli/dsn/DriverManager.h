/// The installed driver manager as this tool uses it: requests to a driver's setup library, without
/// a window, as any other client of the ODBC installer makes them. Text is UTF-8. One thread.
#ifndef CLI_DRIVERMANAGER_H
#define CLI_DRIVERMANAGER_H

#include <string>

#include "cli/dsn/DsnStore.h"
#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

enum class Request : unsigned short { Add = 1, Configure = 2, Remove = 3 };

class DriverManager {
public:
    virtual ~DriverManager() = default;

    /// Sends a request to the setup library of a driver, without a window.
    /// @param in_values  what the setup library finds as the values of its editor
    /// @return the installer's errors, "code: text" each on a line of its own; empty when it is
    /// done
    virtual std::string Configure(Request in_request, Scope in_scope, const std::string& in_driver,
                                  const std::string& in_dsn, const Entries& in_values) const;
};

}  // namespace Veltrane::Cli

#endif
