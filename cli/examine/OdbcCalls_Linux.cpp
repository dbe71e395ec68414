#include "cli/examine/OdbcCalls.h"

#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <clocale>

#include "VeltraneDialog/Utf8.h"

namespace Veltrane::Cli::OdbcPlatform {

namespace {

constexpr const char* NAMES[] = {"libodbc.so.2", "libiodbc.so.2"};

/// Uses the functions without W: unixODBC passes the bytes of odbc.ini there, and iODBC's wide
/// characters have another size. unixODBC's conversion for a driver with only W functions returns
/// ISO 8859-1.
std::string FromOdbc(const SQLCHAR* in_bytes, std::size_t in_size) {
    std::string bytes(reinterpret_cast<const char*>(in_bytes), in_size);
    std::u16string text;
    if (ODBC::DecodeUtf8(bytes, text)) return bytes;
    return ODBC::EncodeUtf8(std::u16string(in_bytes, in_bytes + in_size));
}

/// @param in_length  the driver's length, which can be more than the room
std::size_t LengthIn(std::span<const SQLCHAR> in_buffer, SQLSMALLINT in_length) {
    const std::size_t room = in_buffer.size() - 1;
    if (in_length >= 0) return std::min(room, static_cast<std::size_t>(in_length));
    return static_cast<std::size_t>(std::find(in_buffer.begin(), in_buffer.end() - 1, 0) -
                                    in_buffer.begin());
}

}  // namespace

const std::span<const char* const> LIBRARIES = NAMES;
const char* const DRIVER_CONNECT = "SQLDriverConnect";
const char* const GET_INFO = "SQLGetInfo";
const char* const GET_DIAGNOSTIC = "SQLGetDiagRec";

void* LoadDriverManager(const std::string& in_name, std::string& out_reason) {
    // As in programs that use drivers: drivers convert text by the locale.
    std::setlocale(LC_CTYPE, "");
    void* const library = dlopen(in_name.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (library == nullptr) out_reason = dlerror();
    return library;
}

void* FindFunction(void* in_library, const char* in_name) { return dlsym(in_library, in_name); }

short DriverConnect(void* in_function, void* in_connection, const std::string& in_text) {
    std::string text = in_text;
    return reinterpret_cast<decltype(&SQLDriverConnect)>(in_function)(
        in_connection, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, nullptr, 0,
        nullptr, SQL_DRIVER_NOPROMPT);
}

short GetInfo(void* in_function, void* in_connection, unsigned short in_kind,
              std::string& out_text) {
    SQLCHAR buffer[512] = {};
    SQLSMALLINT length = -1;
    const SQLRETURN result = reinterpret_cast<decltype(&SQLGetInfo)>(in_function)(
        in_connection, in_kind, buffer, sizeof buffer, &length);
    out_text = FromOdbc(buffer, LengthIn(buffer, length));
    return result;
}

short GetDiagnostic(void* in_function, void* in_connection, short in_number,
                    ConnectionDiagnostic& out_diagnostic) {
    SQLCHAR state[6] = {};
    SQLCHAR text[4096] = {};
    SQLINTEGER code = 0;
    SQLSMALLINT length = -1;
    const SQLRETURN result = reinterpret_cast<decltype(&SQLGetDiagRec)>(in_function)(
        SQL_HANDLE_DBC, in_connection, in_number, state, &code, text, sizeof text, &length);
    out_diagnostic = {FromOdbc(state, LengthIn(state, -1)), code,
                      FromOdbc(text, LengthIn(text, length))};
    return result;
}

}  // namespace Veltrane::Cli::OdbcPlatform
