#include "Setup/ConfigMode.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

#include "Setup/InstallerLibrary.h"
#include "Setup/InstallerPaths.h"
#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC {

namespace {

using SystemCalls::Descriptor;

/// How often to try: a round is lost when another process opens the files too.
constexpr int MAX_ROUNDS = 32;
constexpr unsigned PAUSE = 500;  // microseconds

/// Detects when a file is opened, even one that does not exist yet.
class OpenWatch {
public:
    OpenWatch(int in_inotify, const std::string& in_path) {
        std::string path = SystemCalls::RealPath(in_path.c_str());
        if (path.empty()) path = in_path;
        const std::size_t slash = path.rfind('/');
        m_name = slash == std::string::npos ? path : path.substr(slash + 1);
        const std::string directory =
            slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
        m_watch = inotify_add_watch(in_inotify, directory.c_str(), IN_OPEN | IN_MASK_ADD);
        if (m_watch >= 0) return;
        // The directory cannot be read: watch the file itself.
        m_name.clear();
        m_watch = inotify_add_watch(in_inotify, path.c_str(), IN_OPEN | IN_MASK_ADD);
    }

    bool Matches(const inotify_event& in_event) const {
        const std::string name(in_event.len == 0 ? "" : in_event.name);
        return m_watch >= 0 && in_event.wd == m_watch && name == m_name;
    }

private:
    int m_watch = -1;
    std::string m_name;
};

struct Opened {
    bool m_user = false;
    bool m_system = false;
};

Opened ReadEvents(int in_inotify, const OpenWatch& in_user, const OpenWatch& in_system) {
    Opened opened;
    alignas(inotify_event) char events[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
    for (;;) {
        const ssize_t size = read(in_inotify, events, sizeof events);
        if (size <= 0) return opened;
        for (const char* at = events; at < events + size;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(at);
            opened.m_user = opened.m_user || in_user.Matches(event);
            opened.m_system = opened.m_system || in_system.Matches(event);
            at += sizeof event + event.len;
        }
    }
}

/// The library can create a file while it reads, with the widest mode that the umask allows. This
/// narrows the mode to that of files that we create.
class NewFileGuard {
public:
    NewFileGuard(const std::string& in_path, mode_t in_mode) : m_path(in_path), m_mode(in_mode) {
        struct stat before {};
        m_isAbsent = stat(m_path.c_str(), &before) != 0;
    }
    NewFileGuard(const NewFileGuard&) = delete;
    NewFileGuard& operator=(const NewFileGuard&) = delete;
    ~NewFileGuard() {
        if (!m_isAbsent) return;
        const Descriptor file(open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        struct stat now {};
        if (file.IsOpen() && fstat(file.Get(), &now) == 0 && S_ISREG(now.st_mode) &&
            now.st_size == 0 && (now.st_mode & 0777 & ~m_mode) != 0) {
            fchmod(file.Get(), now.st_mode & m_mode);
        }
    }

private:
    std::string m_path;
    mode_t m_mode;
    bool m_isAbsent = false;
};

/// Asks for the names of the sections, which the library does not cache.
void ReadAnything(const InstallerLibrary& in_library) {
    char names[64];
    in_library.m_readWithoutLock(nullptr, nullptr, "", names, sizeof names, "odbc.ini");
}

Opened Observe(const InstallerLibrary& in_library, int in_inotify, const std::string& in_user,
               const std::string& in_system) {
    // New watches in each round: the files can have been replaced or created.
    const OpenWatch user(in_inotify, in_user);
    const OpenWatch system(in_inotify, in_system);
    ReadEvents(in_inotify, user, system);
    ReadAnything(in_library);
    return ReadEvents(in_inotify, user, system);
}

bool IsUsable(const std::string& in_path) {
    return faccessat(AT_FDCWD, in_path.c_str(), R_OK, AT_EACCESS) == 0 ||
           SystemCalls::IsWritable(in_path.c_str());
}

/// The library opened neither file. If exactly one of them cannot be opened, the library tried that
/// one, and the request fails with an error that has its path. A wrong guess does no harm: a file
/// that cannot be opened is not written either.
ConfigMode GuessFromAccess(const std::string& in_user, const std::string& in_system) {
    const bool isUserUsable = IsUsable(in_user);
    if (isUserUsable == IsUsable(in_system)) return ConfigMode::UNKNOWN;
    return isUserUsable ? ConfigMode::SYSTEM : ConfigMode::USER;
}

/// Returns the mode that the environment sets in the library itself; UNKNOWN if it sets none.
ConfigMode ModeOfEnvironment() {
    // The value needs no trust: the library follows it, and we have to do as the library does.
    const char* const variable = std::getenv("ODBCSEARCH");
    const std::string_view search = variable == nullptr ? "" : variable;
    if (search == "ODBC_SYSTEM_DSN") return ConfigMode::SYSTEM;
    if (search == "ODBC_USER_DSN") return ConfigMode::USER;
    if (search == "ODBC_BOTH_DSN") return ConfigMode::BOTH;
    return ConfigMode::UNKNOWN;
}

}  // namespace

ConfigMode ProbeConfigMode(const InstallerLibrary& in_library) {
    const Descriptor inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify.IsOpen()) return ConfigMode::UNKNOWN;
    const std::string userPath = GetUserIniPath();
    const std::string systemPath = GetSystemIniPath();
    const NewFileGuard userGuard(userPath, 0600);
    const NewFileGuard systemGuard(systemPath, 0644);
    ConfigMode mode = ConfigMode::UNKNOWN;
    for (int round = 0; round < MAX_ROUNDS; ++round) {
        const Opened opened = Observe(in_library, inotify.Get(), userPath, systemPath);
        if (opened.m_user != opened.m_system) {
            mode = opened.m_user ? ConfigMode::USER : ConfigMode::SYSTEM;
            break;
        }
        if (opened.m_user) mode = ConfigMode::BOTH;
        SystemCalls::SleepMicroseconds(PAUSE);
    }
    if (mode == ConfigMode::UNKNOWN) mode = GuessFromAccess(userPath, systemPath);
    ForgetReadValues();
    ClearInstallerErrors();
    return mode;
}

ConfigMode FindConfigMode() {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (library.m_readWithoutLock != nullptr) {
        const ConfigMode mode = ModeOfEnvironment();
        return mode != ConfigMode::UNKNOWN ? mode : ProbeConfigMode(library);
    }
    unsigned short mode = 0;
    const SystemCalls::ForkLock lock;
    if (library.m_getConfigMode == nullptr || library.m_getConfigMode(&mode) == 0) {
        return ConfigMode::BOTH;
    }
    return mode <= 2 ? static_cast<ConfigMode>(mode) : ConfigMode::UNKNOWN;
}

}  // namespace Veltrane::ODBC
