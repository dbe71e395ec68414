/// A set-user-id program that uses the setup library, for the test of its rights.
///
///     set_user_id_client LIBRARY user|system REQUEST
///
/// Writes the result and the installer's errors to standard output.
#include <dlfcn.h>
#include <odbcinst.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int in_argumentCount, char** in_arguments) {
    if (in_argumentCount != 4) return 2;
    void* const library = dlopen(in_arguments[1], RTLD_NOW | RTLD_LOCAL);
    using Function = int (*)(void*, unsigned short, const char*, const char*);
    const auto configure =
        library == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(library, "ConfigDSN"));
    if (configure == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    const bool isSystem = std::strcmp(in_arguments[2], "system") == 0;
    SQLSetConfigMode(isSystem ? ODBC_SYSTEM_DSN : ODBC_USER_DSN);
    const auto request = static_cast<unsigned short>(std::atoi(in_arguments[3]));
    std::printf("result %d\n", configure(nullptr, request, "Veltrane", "DSN=sales\0"));
    for (WORD i = 1; i <= 8; ++i) {
        DWORD code = 0;
        char text[512] = "";
        WORD length = 0;
        if (SQLInstallerError(i, &code, text, sizeof text, &length) != SQL_SUCCESS) break;
        std::printf("error %u %s\n", static_cast<unsigned>(code), text);
    }
    return 0;
}
