#include <dlfcn.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "Setup/ConfigModeProbe.h"
#include "Setup/InstallerLibrary.h"

namespace Veltrane::ODBC {

namespace {

constexpr char LIBRARY_NAME[] = "libodbcinst.so.2";
constexpr char NOT_INSTALLED[] =
    "The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.";
constexpr char NOT_INSTALLED_TITLE[] = "ODBC Installer Error";

template <typename Function>
void Bind(void* in_library, const char* in_name, Function& out_function) {
    out_function = reinterpret_cast<Function>(::dlsym(in_library, in_name));
}

InstallerLibrary Load() {
    InstallerLibrary library;
    void* const handle = ::dlopen(LIBRARY_NAME, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        std::fprintf(stderr, "%s: %s\n", NOT_INSTALLED_TITLE, NOT_INSTALLED);
        return library;
    }
    Bind(handle, "SQLValidDSN", library.m_validDSN);
    Bind(handle, "SQLPostInstallerError", library.m_postInstallerError);
    Bind(handle, "SQLGetConfigMode", library.m_getConfigMode);
    Bind(handle, "_odbcinst_UserINI", library.m_userIni);
    Bind(handle, "_odbcinst_SystemINI", library.m_systemIni);
    Bind(handle, "SQLWritePrivateProfileString", library.m_writeProfileString);
    Bind(handle, "__clear_ini_cache", library.m_clearCache);
    Bind(handle, "__SQLGetPrivateProfileStringNL", library.m_readWithoutLock);
    return library;
}

bool IsPrivileged() { return ::getauxval(AT_SECURE) != 0; }

std::string AskPath(int (*in_function)(char*, int)) {
    std::vector<char> path(InstallerLibrary::PATH_BUFFER, '\0');
    in_function(path.data(), 0);
    return path.data();
}

std::string GetHome() {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "/home";
}

/// The variable that overrides the config mode in the library itself.
ConfigMode ModeOfEnvironment() {
    const char* const variable = std::getenv("ODBCSEARCH");
    const std::string_view search = variable == nullptr ? "" : variable;
    if (search == "ODBC_SYSTEM_DSN") return ConfigMode::SYSTEM;
    if (search == "ODBC_USER_DSN") return ConfigMode::USER;
    if (search == "ODBC_BOTH_DSN") return ConfigMode::BOTH;
    return ConfigMode::UNKNOWN;
}

}  // namespace

const InstallerLibrary& GetInstallerLibrary() {
    // Process-wide: set on first use, never changed.
    static const InstallerLibrary s_library = Load();
    return s_library;
}

ConfigMode FindConfigMode() {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (library.m_readWithoutLock != nullptr) {
        const ConfigMode mode = ModeOfEnvironment();
        return mode != ConfigMode::UNKNOWN ? mode : ProbeConfigMode(library);
    }
    unsigned short mode = 0;
    if (library.m_getConfigMode == nullptr || library.m_getConfigMode(&mode) == 0) {
        return ConfigMode::BOTH;
    }
    return mode <= 2 ? static_cast<ConfigMode>(mode) : ConfigMode::UNKNOWN;
}

std::string GetUserIniPath() {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (library.m_userIni != nullptr && !IsPrivileged()) return AskPath(library.m_userIni);
    return GetHome() + "/.odbc.ini";
}

std::string GetSystemIniPath() {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (library.m_systemIni != nullptr && !IsPrivileged()) return AskPath(library.m_systemIni);
    return "/etc/odbc.ini";
}

void ForgetReadValues() {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (library.m_clearCache != nullptr) {
        library.m_clearCache();
    } else if (library.m_writeProfileString != nullptr && library.m_readWithoutLock == nullptr) {
        // Versions that keep the function to themselves call it behind each write. This one removes
        // an absent section from a file without any.
        library.m_writeProfileString("-", nullptr, nullptr, "/dev/null");
        ClearInstallerErrors();
    }
}

void ClearInstallerErrors() {
    // Every call but the posting of an error empties the list.
    const InstallerLibrary& library = GetInstallerLibrary();
    if (library.m_validDSN != nullptr) library.m_validDSN("-");
}

}  // namespace Veltrane::ODBC
