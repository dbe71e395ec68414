/// Connects to a data source through the driver manager, in a process of its own: a driver that
/// hangs is killed, and one that crashes takes nothing with it.
///
/// The process is the tool itself, `veltrane-dsn test - --apart`. It gets a connection string on
/// its standard input, so no value is in an argument list. It loads the driver manager at run time.
#ifndef CLI_CONNECTIONTEST_H
#define CLI_CONNECTIONTEST_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "cli/dsn/Entries.h"
#include "cli/examine/Finding.h"

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

struct ConnectionDiagnostic {
    std::string m_state;  ///< SQLSTATE, five characters
    long m_nativeCode = 0;
    std::string m_text;  ///< passwords masked
};

enum class ConnectionOutcome {
    Connected,
    Refused,    ///< the diagnostics, or the findings, say why
    TimedOut,   ///< the driver was killed
    Crashed,    ///< the driver has ended its process
    Cancelled,  ///< by Cancel
    NotTested   ///< no driver manager can be loaded
};

struct ConnectionResult {
    ConnectionOutcome m_outcome = ConnectionOutcome::NotTested;
    std::chrono::milliseconds m_time{0};  ///< of the call that connects; when killed, until then
    std::string m_serverName;             ///< SQL_DBMS_NAME
    std::string m_serverVersion;          ///< SQL_DBMS_VER
    std::vector<ConnectionDiagnostic> m_diagnostics;  ///< of a success, too: its warnings
    Findings m_reasons;  ///< why the driver cannot be found or loaded, each with its repair
    std::string m_text;  ///< one sentence on the outcome, for people
};

/// One test. Starts with the object; ends with it, too.
class ConnectionTest {
public:
    /// @throws CommandError EXIT_FAILED when the process cannot be started
    explicit ConnectionTest(const ConnectionRequest& in_request);
    ConnectionTest(const ConnectionTest&) = delete;
    ConnectionTest& operator=(const ConnectionTest&) = delete;
    /// Kills what still runs.
    ~ConnectionTest();

    /// Blocks until the test is over, at most for its time limit. To be called once, from one
    /// thread.
    ConnectionResult Wait();
    /// Ends the test; Wait then returns at once. From any thread while the object lives.
    void Cancel();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// The work of the process that is kept apart: reads the request from standard input, and writes
/// what became of it to standard output.
void AnswerConnectionTest();

}  // namespace Veltrane::Cli

#endif
