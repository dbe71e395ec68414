/// Connects to a data source through the driver manager in a separate process, so that a driver
/// that hangs can be killed and one that crashes does no harm.
///
/// The process (ApartWork.h) gets a connection string on its standard input, so no value is in an
/// argument list. It loads the driver manager at run time.
#ifndef CLI_CONNECTIONTEST_H
#define CLI_CONNECTIONTEST_H

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

struct ConnectionRequest {
    /// The attributes of the connection string, in order, in UTF-8. "DSN" first tests a stored DSN,
    /// and other attributes override its values; "Driver" first tests values that are not stored.
    Entries m_attributes;
    std::chrono::milliseconds m_timeout = std::chrono::seconds(15);
    std::string m_driverManager;  ///< its library; empty: the first that can be loaded
};

/// Blocks until the test is over, at most for its time limit.
/// @return the output of `test --json` without the name: "connected", "outcome" ("connected",
///         "refused", "timed out", "crashed" or, without a driver manager, "not tested"), "text", a
///         sentence to show, "time_ms" of the call, "server", "version", "diagnostics" with
///         passwords masked (warnings after a success), and "findings": why the driver cannot be
///         found or loaded, each with its repair
/// @throws CommandError EXIT_FAILED if the process cannot be started
nlohmann::ordered_json TestConnection(const ConnectionRequest& in_request);

}  // namespace Veltrane::Cli

#endif
