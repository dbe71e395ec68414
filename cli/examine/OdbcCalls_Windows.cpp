#include "cli/examine/OdbcCalls.h"

#include <algorithm>

#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/WideText.h"
#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

namespace Veltrane::Cli::OdbcPlatform {

namespace {

constexpr const char* NAMES[] = {"odbc32.dll"};

/// @param in_length  the driver's length, which can be more than the room
std::string FromOdbc(std::span<const SQLWCHAR> in_buffer, std::size_t in_length) {
    const std::size_t length = std::min(in_buffer.size() - 1, in_length);
    const auto end = std::find(in_buffer.begin(), in_buffer.begin() + static_cast<long>(length), 0);
    return ODBC::ToUtf8(std::wstring(in_buffer.begin(), end));
}

}  // namespace

const std::span<const char* const> LIBRARIES = NAMES;
const char* const DRIVER_CONNECT = "SQLDriverConnectW";
const char* const GET_INFO = "SQLGetInfoW";
const char* const GET_DIAGNOSTIC = "SQLGetDiagRecW";

void* LoadDriverManager(const std::string& in_name, std::string& out_reason) {
    const HMODULE library = LoadLibraryW(ODBC::ToWide(in_name).c_str());
    if (library == nullptr) out_reason = in_name + ": " + Orska::Support::DescribeLastError();
    return reinterpret_cast<void*>(library);
}

void* FindFunction(void* in_library, const char* in_name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(in_library), in_name));
}

short DriverConnect(void* in_function, void* in_connection, const std::string& in_text) {
    std::wstring text = ODBC::ToWide(in_text);
    return reinterpret_cast<decltype(&SQLDriverConnectW)>(in_function)(
        in_connection, nullptr, text.data(), SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
}

short GetInfo(void* in_function, void* in_connection, unsigned short in_kind,
              std::string& out_text) {
    SQLWCHAR buffer[512] = {};
    SQLSMALLINT length = sizeof buffer;  // bytes
    const SQLRETURN result = reinterpret_cast<decltype(&SQLGetInfoW)>(in_function)(
        in_connection, in_kind, buffer, sizeof buffer, &length);
    out_text = FromOdbc(buffer, static_cast<unsigned short>(length) / sizeof(SQLWCHAR));
    return result;
}

short GetDiagnostic(void* in_function, void* in_connection, short in_number,
                    ConnectionDiagnostic& out_diagnostic) {
    SQLWCHAR state[6] = {};
    SQLWCHAR text[4096] = {};
    SQLINTEGER code = 0;
    SQLSMALLINT length = 4096;  // characters
    const SQLRETURN result = reinterpret_cast<decltype(&SQLGetDiagRecW)>(in_function)(
        SQL_HANDLE_DBC, in_connection, in_number, state, &code, text, 4096, &length);
    out_diagnostic = {FromOdbc(state, 5), code,
                      FromOdbc(text, static_cast<unsigned short>(length))};
    return result;
}

}  // namespace Veltrane::Cli::OdbcPlatform
