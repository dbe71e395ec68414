#include "cli/dsn/InstallerCalls.h"

#include <windows.h>
// Must follow <windows.h>.
#include <odbcinst.h>

#include <iterator>

#include "VeltraneDialog/WideText.h"

namespace Veltrane::Cli::InstallerCalls {

using ODBC::ToUtf8;
using ODBC::ToWide;

bool Configure(unsigned short in_request, const std::string& in_driver,
               const std::string& in_attribute) {
    const std::wstring attributes = ToWide(in_attribute) + L'\0';
    return SQLConfigDataSourceW(nullptr, in_request, ToWide(in_driver).c_str(),
                                attributes.c_str()) != FALSE;
}

bool GetError(unsigned short in_number, unsigned long& out_code, std::string& out_text) {
    DWORD code = 0;
    wchar_t text[SQL_MAX_MESSAGE_LENGTH + 1] = L"";
    WORD length = 0;
    const RETCODE result =
        SQLInstallerErrorW(in_number, &code, text, static_cast<WORD>(std::size(text)), &length);
    out_code = code;
    out_text = ToUtf8(text);
    return result == SQL_SUCCESS || result == SQL_SUCCESS_WITH_INFO;
}

}  // namespace Veltrane::Cli::InstallerCalls
