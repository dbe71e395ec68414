#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/WideText.h"
#include "cli/examine/OdbcPlatform.h"

namespace Veltrane::Cli::OdbcPlatform {

const std::vector<std::string> LIBRARIES{"odbc32.dll"};

void* LoadDriverManager(const std::string& in_name, std::string& out_reason) {
    const HMODULE library = LoadLibraryW(ODBC::ToWide(in_name).c_str());
    if (library == nullptr) out_reason = in_name + ": " + Orska::Support::DescribeLastError();
    return reinterpret_cast<void*>(library);
}

void* FindFunction(void* in_library, const char* in_name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(in_library), in_name));
}

std::basic_string<SQLTCHAR> ToOdbc(const std::string& in_text) { return ODBC::ToWide(in_text); }

std::string FromOdbc(std::basic_string<SQLTCHAR> in_text) { return ODBC::ToUtf8(in_text); }

}  // namespace Veltrane::Cli::OdbcPlatform
