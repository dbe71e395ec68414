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

/// Other processes open the files too; each round has a new chance of being alone.
constexpr int MAX_ROUNDS = 32;
constexpr unsigned PAUSE = 500;  // microseconds

/// Notices when a file is opened, also one that does not exist yet.
class OpenWatch {
public:
    OpenWatch(int in_inotify, const std::string& in_path) {
        std::string path = SystemCalls::RealPath(in_path.c_str());
        if (path.empty()) path = in_path;
        const std::size_t slash = path.rfind('/');
        m_name = slash == std::string::npos ? path : path.substr(slash + 1);
        const std::string directory =
            slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
        m_watch = ::inotify_add_watch(in_inotify, directory.c_str(), IN_OPEN | IN_MASK_ADD);
        if (m_watch >= 0) return;
        // A directory that may not be listed; the file itself will do.
        m_name.clear();
        m_watch = ::inotify_add_watch(in_inotify, path.c_str(), IN_OPEN | IN_MASK_ADD);
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
        const ssize_t size = ::read(in_inotify, events, sizeof events);
        if (size <= 0) return opened;
        for (const char* at = events; at < events + size;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(at);
            opened.m_user = opened.m_user || in_user.Matches(event);
            opened.m_system = opened.m_system || in_system.Matches(event);
            at += sizeof event + event.len;
        }
    }
}

/// A file that the library makes in passing has the widest mode that the umask allows; this narrows
/// it to that of the files that we make.
class NewFileGuard {
public:
    NewFileGuard(const std::string& in_path, mode_t in_mode) : m_path(in_path), m_mode(in_mode) {
        struct stat before {};
        m_isAbsent = ::stat(m_path.c_str(), &before) != 0;
    }
    NewFileGuard(const NewFileGuard&) = delete;
    NewFileGuard& operator=(const NewFileGuard&) = delete;
    ~NewFileGuard() {
        if (!m_isAbsent) return;
        const Descriptor file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        struct stat now {};
        if (file.IsOpen() && ::fstat(file.Get(), &now) == 0 && S_ISREG(now.st_mode) &&
            now.st_size == 0 && (now.st_mode & 0777 & ~m_mode) != 0) {
            ::fchmod(file.Get(), now.st_mode & m_mode);
        }
    }

private:
    std::string m_path;
    mode_t m_mode;
    bool m_isAbsent = false;
};

/// Never served from the library's cache, because it asks for the names of the sections.
void ReadAnything(const InstallerLibrary& in_library) {
    char names[64];
    in_library.m_readWithoutLock(nullptr, nullptr, "", names, sizeof names, "odbc.ini");
}

Opened Observe(const InstallerLibrary& in_library, int in_inotify, const std::string& in_user,
               const std::string& in_system) {
    // Anew in each round, because the files may have been replaced or made.
    const OpenWatch user(in_inotify, in_user);
    const OpenWatch system(in_inotify, in_system);
    ReadEvents(in_inotify, user, system);
    ReadAnything(in_library);
    return ReadEvents(in_inotify, user, system);
}

bool IsUsable(const std::string& in_path) {
    return ::faccessat(AT_FDCWD, in_path.c_str(), R_OK, AT_EACCESS) == 0 ||
           SystemCalls::IsWritable(in_path.c_str());
}

/// Nothing was opened: when one of the files cannot be, it is that one that the library tried. The
/// request fails in any case, and now for a reason with a path. No harm comes of an error in here:
/// a file that cannot be opened is not written to either.
ConfigMode GuessFromAccess(const std::string& in_user, const std::string& in_system) {
    const bool isUserUsable = IsUsable(in_user);
    if (isUserUsable == IsUsable(in_system)) return ConfigMode::UNKNOWN;
    return isUserUsable ? ConfigMode::SYSTEM : ConfigMode::USER;
}

/// The variable that overrides the config mode in the library itself.
ConfigMode ModeOfEnvironment() {
    // Not a matter of trust: it tells what the library, which believes it, is about to do.
    const char* const variable = std::getenv("ODBCSEARCH");
    const std::string_view search = variable == nullptr ? "" : variable;
    if (search == "ODBC_SYSTEM_DSN") return ConfigMode::SYSTEM;
    if (search == "ODBC_USER_DSN") return ConfigMode::USER;
    if (search == "ODBC_BOTH_DSN") return ConfigMode::BOTH;
    return ConfigMode::UNKNOWN;
}

}  // namespace

ConfigMode ProbeConfigMode(const InstallerLibrary& in_library) {
    const Descriptor inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
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
    if (library.m_getConfigMode == nullptr || library.m_getConfigMode(&mode) == 0) {
        return ConfigMode::BOTH;
    }
    return mode <= 2 ? static_cast<ConfigMode>(mode) : ConfigMode::UNKNOWN;
}

}  // namespace Veltrane::ODBC
