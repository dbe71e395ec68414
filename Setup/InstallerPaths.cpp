#include "Setup/InstallerPaths.h"

#include <pwd.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "Setup/InstallerLibrary.h"
#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC {

namespace {

constexpr char SYSTEM_INI[] = "/etc/odbc.ini";
/// Every version uses a shorter path unchanged.
constexpr std::size_t USUAL_PATH = 256;

std::string AskPath(int (*in_function)(char*, int)) {
    std::vector<char> path(InstallerLibrary::PATH_BUFFER, '\0');
    // The library caches the system's path without a lock.
    const SystemCalls::ForkLock lock;
    in_function(path.data(), 0);
    return path.data();
}

std::string GetPasswdHome() {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "/home";
}

std::string GetHome() {
    const char* const home = std::getenv("HOME");
    return home != nullptr ? home : GetPasswdHome();
}

/// Returns the path in a variable if the file can be read or created, else an empty text. This is
/// iODBC's rule.
std::string GetUsablePath(const char* in_variable) {
    const char* const path = std::getenv(in_variable);
    if (path == nullptr || *path == '\0') return {};
    const bool isReadable = access(path, R_OK) == 0;
    return isReadable || (errno == ENOENT && SystemCalls::IsWritable(path)) ? path : std::string();
}

}  // namespace

bool IsPrivileged() noexcept { return getauxval(AT_SECURE) != 0; }

std::string GetUserIniPath() {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (IsPrivileged()) return GetPasswdHome() + "/.odbc.ini";
    if (library.m_driverManager == DriverManager::IODBC) {
        const std::string path = GetUsablePath("ODBCINI");
        return path.empty() ? GetHome() + "/.odbc.ini" : path;
    }
    // Avoids unixODBC's look-up of the user, which it makes even if the variable has the path.
    const char* const variable = std::getenv("ODBCINI");
    const std::string_view path = variable == nullptr ? "" : variable;
    if (!path.empty() && path.size() < USUAL_PATH) return std::string(path);
    if (library.m_userIni != nullptr) return AskPath(library.m_userIni);
    return GetPasswdHome() + "/.odbc.ini";
}

std::string GetSystemIniPath() {
    const InstallerLibrary& library = GetInstallerLibrary();
    std::string path;
    if (IsPrivileged()) return SYSTEM_INI;
    if (library.m_driverManager == DriverManager::IODBC) path = GetUsablePath("SYSODBCINI");
    if (library.m_systemIni != nullptr) path = AskPath(library.m_systemIni);
    return path.empty() ? SYSTEM_INI : path;
}

}  // namespace Veltrane::ODBC
