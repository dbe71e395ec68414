/// A program that configures a data source: one call of SQLConfigDataSource with a parent window,
/// for the tests that drive the editors by keys.
///
///     configure_data_source FILE add|config [key=value ...]
///
/// Writes to the file, once the call is back, its result and the installer's errors.
#include <odbcinst.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

std::string Attributes(int in_count, char** in_arguments) {
    std::string list;
    for (int i = 0; i < in_count; ++i) {
        list += in_arguments[i];
        list += '\0';
    }
    return list + '\0';
}

void WriteErrors(std::FILE* in_file) {
    for (WORD i = 1; i <= 8; ++i) {
        DWORD code = 0;
        char text[4096] = "";
        WORD length = 0;
        const RETCODE result = SQLInstallerError(i, &code, text, sizeof text, &length);
        if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO) {
            return;
        }
        std::fprintf(in_file, "error %u %s\n", static_cast<unsigned>(code), text);
    }
}

}  // namespace

int main(int in_argumentCount, char** in_arguments) {
    if (in_argumentCount < 3) {
        return 2;
    }
    const bool isAdd = std::strcmp(in_arguments[2], "add") == 0;
    const std::string attributes = Attributes(in_argumentCount - 3, in_arguments + 3);
    // What the handle points to must not matter, so it points nowhere.
    HWND window = reinterpret_cast<HWND>(1);
    const BOOL result = SQLConfigDataSource(window, isAdd ? ODBC_ADD_DSN : ODBC_CONFIG_DSN,
                                            "Veltrane", attributes.c_str());
    const std::string name = std::string(in_arguments[1]) + ".part";
    std::FILE* const file = std::fopen(name.c_str(), "w");
    if (file == nullptr) {
        return 2;
    }
    std::fprintf(file, "result %d\n", result);
    WriteErrors(file);
    std::fclose(file);
    return std::rename(name.c_str(), in_arguments[1]) == 0 ? 0 : 2;
}
