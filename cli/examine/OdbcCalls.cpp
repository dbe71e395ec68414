#include "cli/examine/OdbcCalls.h"

#include <cstdint>

#include "cli/system/CommandError.h"
#include "cli/system/PlatformWords.h"

namespace Veltrane::Cli {

namespace {

// The ODBC headers need those of the system, which only the files of each system include.
using AllocHandle = short(short in_kind, void* in_parent, void** out_handle);
/// The value is a pointer, or a number in its place.
using SetEnvAttr = short(void* in_environment, int in_attribute, std::uintptr_t in_value,
                         int in_length);
using DisconnectCall = short(void* in_connection);
constexpr short HANDLE_OF_ENVIRONMENT = 1;  // SQL_HANDLE_ENV
constexpr short HANDLE_OF_CONNECTION = 2;   // SQL_HANDLE_DBC
constexpr int ODBC_VERSION = 200;           // SQL_ATTR_ODBC_VERSION
constexpr std::uintptr_t VERSION_3 = 3;     // SQL_OV_ODBC3

bool HasSucceeded(short in_result) { return in_result == 0 || in_result == 1; }

}  // namespace

OdbcCalls::OdbcCalls(const std::string& in_library) {
    std::vector<std::string> names(OdbcPlatform::LIBRARIES.begin(), OdbcPlatform::LIBRARIES.end());
    if (!in_library.empty()) names = {in_library};
    std::string reasons;
    for (const std::string& name : names) {
        std::string reason;
        m_name = name;
        m_library = OdbcPlatform::LoadDriverManager(name, reason);
        if (m_library != nullptr) break;
        reasons += (reasons.empty() ? "" : "; ") + reason;
    }
    if (m_library == nullptr) {
        FailWith("No driver manager can be loaded: " + reasons + ". " +
                 PLATFORM_WORDS.m_driverManagerRepair);
    }
    auto* const allocate = FindAs<AllocHandle>("SQLAllocHandle");
    auto* const setAttribute = FindAs<SetEnvAttr>("SQLSetEnvAttr");
    const bool isReady = HasSucceeded(allocate(HANDLE_OF_ENVIRONMENT, nullptr, &m_environment)) &&
                         HasSucceeded(setAttribute(m_environment, ODBC_VERSION, VERSION_3, 0)) &&
                         HasSucceeded(allocate(HANDLE_OF_CONNECTION, m_environment, &m_connection));
    if (!isReady) FailWith("The driver manager " + m_name + " gives no connection handle.");
}

void* OdbcCalls::Find(const char* in_function) const {
    void* const function = OdbcPlatform::FindFunction(m_library, in_function);
    if (function == nullptr) {
        FailWith("The library " + m_name + " is no driver manager: it has no " + in_function + ".");
    }
    return function;
}

bool OdbcCalls::Connect(const std::string& in_connectionString) {
    const short result = OdbcPlatform::DriverConnect(Find(OdbcPlatform::DRIVER_CONNECT),
                                                     m_connection, in_connectionString);
    return HasSucceeded(result);
}

std::string OdbcCalls::GetInfo(unsigned short in_kind) {
    std::string text;
    const short result =
        OdbcPlatform::GetInfo(Find(OdbcPlatform::GET_INFO), m_connection, in_kind, text);
    return HasSucceeded(result) ? text : std::string();
}

std::vector<ConnectionDiagnostic> OdbcCalls::GetDiagnostics() {
    constexpr short MAX_NUMBER = 32;  // for a driver that never reports the end
    std::vector<ConnectionDiagnostic> diagnostics;
    void* const function = Find(OdbcPlatform::GET_DIAGNOSTIC);
    for (short i = 1; i <= MAX_NUMBER; ++i) {
        ConnectionDiagnostic diagnostic;
        const short result = OdbcPlatform::GetDiagnostic(function, m_connection, i, diagnostic);
        if (!HasSucceeded(result)) break;
        // iODBC adds a diagnostic without an error, whose text it has already freed.
        if (diagnostic.m_state == "00000") continue;
        diagnostic.m_text.erase(diagnostic.m_text.find_last_not_of(" \r\n\t") + 1);
        diagnostics.push_back(std::move(diagnostic));
    }
    return diagnostics;
}

void OdbcCalls::Disconnect() { FindAs<DisconnectCall>("SQLDisconnect")(m_connection); }

}  // namespace Veltrane::Cli
