/// Connects to a data source through the driver manager, in a process of its own: a driver that
/// hangs is killed, and one that crashes takes nothing with it.
///
/// The process is the tool itself, `veltrane-dsn test - --apart`. It gets a connection string on
/// its standard input, so no value is in an argument list. It loads the driver manager at run time.
#ifndef CLI_CONNECTIONTEST_H
#define CLI_CONNECTIONTEST_H

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

struct ConnectionRequest {
    /// The attributes of the connection string, in their order, in UTF-8. "DSN" begins a test of a
    /// stored DSN, whose values count where no other attribute replaces them; "Driver" one of
    /// values that are not stored.
    Entries m_attributes;
    std::chrono::milliseconds m_timeout = std::chrono::seconds(15);
    std::string m_driverManager;  ///< its library; empty: the first that can be loaded
    std::string m_program;        ///< path of the tool; empty: this program, which is then the tool
};

/// Blocks until the test is over, at most for its time limit.
/// @return what `test --json` prints, without the name: "connected", "outcome" ("connected",
///         "refused", "timed out", "crashed" or, without a driver manager, "not tested"), "text",
///         one sentence for people, "time_ms" of the call, "server", "version", "diagnostics" with
///         passwords masked, of a success its warnings, and "findings": why the driver cannot be
///         found or loaded, each with its repair
/// @throws CommandError EXIT_FAILED when the process cannot be started
nlohmann::ordered_json TestConnection(const ConnectionRequest& in_request);

/// The work of the process that is kept apart: reads the request from standard input, and writes
/// what became of it to standard output.
void AnswerConnectionTest();

}  // namespace Veltrane::Cli

#endif
