#include <dlfcn.h>

#include <clocale>

#include "VeltraneDialog/Utf8.h"
#include "cli/examine/OdbcPlatform.h"

namespace Veltrane::Cli::OdbcPlatform {

const std::vector<std::string> LIBRARIES{"libodbc.so.2", "libiodbc.so.2"};

void* LoadDriverManager(const std::string& in_name, std::string& out_reason) {
    // Drivers convert text by the locale, so programs that use them set it, too.
    std::setlocale(LC_CTYPE, "");
    void* const library = dlopen(in_name.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (library == nullptr) out_reason = dlerror();
    return library;
}

void* FindFunction(void* in_library, const char* in_name) { return dlsym(in_library, in_name); }

std::basic_string<SQLTCHAR> ToOdbc(const std::string& in_text) {
    return {in_text.begin(), in_text.end()};
}

/// Text that is not UTF-8 is ISO 8859-1: unixODBC converts so for a driver with only W functions.
std::string FromOdbc(std::basic_string<SQLTCHAR> in_text) {
    std::string bytes(in_text.begin(), in_text.end());
    std::u16string text;
    if (ODBC::DecodeUtf8(bytes, text)) return bytes;
    return ODBC::EncodeUtf8(std::u16string(in_text.begin(), in_text.end()));
}

}  // namespace Veltrane::Cli::OdbcPlatform
