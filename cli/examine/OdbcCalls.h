/// The calls of a driver manager that connect. It is loaded when the object is made, so the program
/// runs without one too. Text is UTF-8.
#ifndef CLI_ODBCCALLS_H
#define CLI_ODBCCALLS_H

#include <span>
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
    template <typename Function>
    Function* FindAs(const char* in_function) const {
        return reinterpret_cast<Function*>(Find(in_function));
    }

    std::string m_name;
    void* m_library = nullptr;  ///< never unloaded: drivers leave threads
    void* m_environment = nullptr;
    void* m_connection = nullptr;
};

/// The parts that differ between the systems: the library, and the functions with text.
namespace OdbcPlatform {

/// Possible driver managers, the usual one first.
extern const std::span<const char* const> LIBRARIES;
/// @return null with the reason
void* LoadDriverManager(const std::string& in_name, std::string& out_reason);
void* FindFunction(void* in_library, const char* in_name);

extern const char* const DRIVER_CONNECT;
extern const char* const GET_INFO;
extern const char* const GET_DIAGNOSTIC;
/// These call the functions named above. @return the function's result
short DriverConnect(void* in_function, void* in_connection, const std::string& in_text);
short GetInfo(void* in_function, void* in_connection, unsigned short in_kind,
              std::string& out_text);
short GetDiagnostic(void* in_function, void* in_connection, short in_number,
                    ConnectionDiagnostic& out_diagnostic);

}  // namespace OdbcPlatform

}  // namespace Veltrane::Cli

#endif
