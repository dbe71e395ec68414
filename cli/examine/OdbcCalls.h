/// The calls that connect through a driver manager. The constructor loads it, so the program also
/// runs without one. Text is UTF-8.
#ifndef CLI_ODBCCALLS_H
#define CLI_ODBCCALLS_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

struct ConnectionDiagnostic {
    std::string m_state;  ///< SQLSTATE, five characters
    long m_nativeCode = 0;
    std::string m_text;
};

class OdbcCalls {
public:
    /// @param in_library  the driver manager; empty for the first of the system that can be loaded
    /// @throws CommandError EXIT_FAILED if it cannot be loaded or used
    explicit OdbcCalls(const std::string& in_library);
    OdbcCalls(const OdbcCalls&) = delete;
    OdbcCalls& operator=(const OdbcCalls&) = delete;

    /// Never prompts the user. @return false on failure, with the reason in the diagnostics
    bool Connect(const std::string& in_connectionString);
    /// Returns the driver's information about the server, such as SQL_DBMS_NAME; empty on failure.
    std::string GetInfo(unsigned short in_kind);
    /// Returns the diagnostics of the last call.
    std::vector<ConnectionDiagnostic> GetDiagnostics();
    void Disconnect();

private:
    void* Find(const char* in_function) const;

    std::string m_name;
    void* m_library = nullptr;  ///< never unloaded: drivers leave threads
    void* m_environment = nullptr;
    void* m_connection = nullptr;
};

}  // namespace Veltrane::Cli

#endif
