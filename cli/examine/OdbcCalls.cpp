#include "cli/examine/OdbcCalls.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "cli/examine/OdbcPlatform.h"
#include "cli/system/CommandError.h"
#include "cli/system/PlatformWords.h"

/// A function of the driver manager; its W form where ODBC's headers define the name so.
#define VELTRANE_FIND(function) \
    reinterpret_cast<decltype(&function)>(Find(VELTRANE_NAME_OF(function)))
#define VELTRANE_NAME_OF(function) #function

namespace Veltrane::Cli {

namespace {

/// @param in_length  the driver's length, which can be more than the room
std::string TextIn(std::span<const SQLTCHAR> in_buffer, std::size_t in_length) {
    const auto limit =
        in_buffer.begin() + static_cast<std::ptrdiff_t>(std::min(in_buffer.size() - 1, in_length));
    return OdbcPlatform::FromOdbc({in_buffer.begin(), std::find(in_buffer.begin(), limit, 0)});
}

}  // namespace

OdbcCalls::OdbcCalls(const std::string& in_library) {
    const std::vector<std::string> given{in_library};
    std::string reasons;
    for (const std::string& name : in_library.empty() ? OdbcPlatform::LIBRARIES : given) {
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
    auto* const allocate = VELTRANE_FIND(SQLAllocHandle);
    // The parameter is a number, cast to a pointer.
    auto* const version = reinterpret_cast<void*>(std::uintptr_t{SQL_OV_ODBC3});
    const bool isReady = SQL_SUCCEEDED(allocate(SQL_HANDLE_ENV, nullptr, &m_environment)) &&
                         SQL_SUCCEEDED(VELTRANE_FIND(SQLSetEnvAttr)(
                             m_environment, SQL_ATTR_ODBC_VERSION, version, 0)) &&
                         SQL_SUCCEEDED(allocate(SQL_HANDLE_DBC, m_environment, &m_connection));
    if (!isReady) FailWith("The driver manager " + m_name + " returns no connection handle.");
}

void* OdbcCalls::Find(const char* in_function) const {
    void* const function = OdbcPlatform::FindFunction(m_library, in_function);
    if (function == nullptr) {
        FailWith("The library " + m_name + " is no driver manager: it has no " + in_function + ".");
    }
    return function;
}

bool OdbcCalls::Connect(const std::string& in_connectionString) {
    auto text = OdbcPlatform::ToOdbc(in_connectionString);
    return SQL_SUCCEEDED(VELTRANE_FIND(SQLDriverConnect)(
        m_connection, nullptr, text.data(), SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
}

std::string OdbcCalls::GetInfo(unsigned short in_kind) {
    SQLTCHAR text[512] = {};
    SQLSMALLINT size = sizeof text;  // bytes
    const SQLRETURN result =
        VELTRANE_FIND(SQLGetInfo)(m_connection, in_kind, text, sizeof text, &size);
    if (!SQL_SUCCEEDED(result)) return {};
    return TextIn(text, static_cast<unsigned short>(size) / sizeof(SQLTCHAR));
}

std::vector<ConnectionDiagnostic> OdbcCalls::GetDiagnostics() {
    constexpr SQLSMALLINT MAX_NUMBER = 32;  // for a driver that never reports the end
    constexpr SQLSMALLINT MAX_TEXT = 4096;  // characters
    std::vector<ConnectionDiagnostic> diagnostics;
    for (SQLSMALLINT i = 1; i <= MAX_NUMBER; ++i) {
        SQLTCHAR state[6] = {};
        SQLTCHAR text[MAX_TEXT] = {};
        SQLINTEGER code = 0;
        SQLSMALLINT length = MAX_TEXT;
        const SQLRETURN result = VELTRANE_FIND(SQLGetDiagRec)(
            SQL_HANDLE_DBC, m_connection, i, state, &code, text, MAX_TEXT, &length);
        if (!SQL_SUCCEEDED(result)) break;
        ConnectionDiagnostic diagnostic{TextIn(state, 5), code,
                                        TextIn(text, static_cast<unsigned short>(length))};
        // iODBC adds a diagnostic without an error, whose text it has already freed.
        if (diagnostic.m_state == "00000") continue;
        diagnostic.m_text.erase(diagnostic.m_text.find_last_not_of(" \r\n\t") + 1);
        diagnostics.push_back(std::move(diagnostic));
    }
    return diagnostics;
}

void OdbcCalls::Disconnect() { VELTRANE_FIND(SQLDisconnect)(m_connection); }

}  // namespace Veltrane::Cli
