#include <windows.h>
// Behind the Windows API, which it needs.
#include <odbcinst.h>

#include <iterator>

#include "VeltraneDialog/WideText_Windows.h"
#include "cli/DriverManager.h"
#include "cli/InitialValuesFile.h"

namespace Veltrane::Cli {

namespace {

using ODBC::ToUtf8;
using ODBC::ToWide;

/// The errors of the last call, one a line: "code: text".
std::string InstallerErrors() {
    std::string text;
    for (WORD i = 1; i <= 8; ++i) {
        DWORD code = 0;
        wchar_t message[SQL_MAX_MESSAGE_LENGTH + 1] = L"";
        WORD length = 0;
        const RETCODE result =
            SQLInstallerErrorW(i, &code, message, static_cast<WORD>(std::size(message)), &length);
        if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO) {
            break;
        }
        if (!text.empty()) {
            text += '\n';
        }
        text.append(std::to_string(code)).append(": ").append(ToUtf8(message));
    }
    return text.empty() ? "the installer gave no reason" : text;
}

}  // namespace

std::string DriverManager::Configure(Request in_request, Scope in_scope,
                                     const std::string& in_driver, const std::string& in_dsn,
                                     const Entries& in_values) const {
    constexpr WORD USER_TO_SYSTEM = ODBC_ADD_SYS_DSN - ODBC_ADD_DSN;
    WORD request = static_cast<WORD>(in_request);
    if (in_scope == Scope::System) {
        request = static_cast<WORD>(request + USER_TO_SYSTEM);
    }
    std::wstring attributes = L"DSN=" + ToWide(in_dsn);
    attributes.push_back(L'\0');
    const InitialValuesFile values(in_values);
    const bool isDone = SQLConfigDataSourceW(nullptr, request, ToWide(in_driver).c_str(),
                                             attributes.c_str()) != FALSE;
    return isDone ? std::string() : InstallerErrors();
}

}  // namespace Veltrane::Cli
