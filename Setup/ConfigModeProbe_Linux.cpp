#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "Setup/ConfigModeProbe.h"
#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC {

namespace {

using SystemCalls::FileHandle;

/// Other processes open the files too; each round has a new chance of being alone.
constexpr int MAX_ROUNDS = 64;

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

/// A user file that the library makes in passing is readable by everybody; ours are not.
class NewFileGuard {
public:
    explicit NewFileGuard(const std::string& in_path) : m_path(in_path) {
        struct stat before {};
        m_isAbsent = ::stat(m_path.c_str(), &before) != 0;
    }
    NewFileGuard(const NewFileGuard&) = delete;
    NewFileGuard& operator=(const NewFileGuard&) = delete;
    ~NewFileGuard() {
        if (!m_isAbsent) return;
        const FileHandle file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        struct stat now {};
        if (file.IsOpen() && ::fstat(file.Get(), &now) == 0 && S_ISREG(now.st_mode) &&
            now.st_size == 0 && (now.st_mode & 077) != 0) {
            ::fchmod(file.Get(), now.st_mode & 0700);
        }
    }

private:
    std::string m_path;
    bool m_isAbsent = false;
};

/// Never served from the library's cache, because it asks for the names of the sections.
void ReadAnything(const InstallerLibrary& in_library) {
    char names[64];
    in_library.m_readWithoutLock(nullptr, nullptr, "", names, sizeof names, "odbc.ini");
}

Opened Observe(const InstallerLibrary& in_library, const std::string& in_user,
               const std::string& in_system) {
    const FileHandle inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify.IsOpen()) return {};
    const OpenWatch user(inotify.Get(), in_user);
    const OpenWatch system(inotify.Get(), in_system);
    ReadAnything(in_library);
    return ReadEvents(inotify.Get(), user, system);
}

}  // namespace

ConfigMode ProbeConfigMode(const InstallerLibrary& in_library) {
    const std::string userPath = GetUserIniPath();
    const std::string systemPath = GetSystemIniPath();
    const NewFileGuard guard(userPath);
    ConfigMode mode = ConfigMode::UNKNOWN;
    for (int round = 0; round < MAX_ROUNDS; ++round) {
        const Opened opened = Observe(in_library, userPath, systemPath);
        if (!opened.m_user && !opened.m_system) continue;
        if (opened.m_user && opened.m_system) {
            mode = ConfigMode::BOTH;
            continue;
        }
        mode = opened.m_user ? ConfigMode::USER : ConfigMode::SYSTEM;
        break;
    }
    ForgetReadValues();
    ClearInstallerErrors();
    return mode;
}

}  // namespace Veltrane::ODBC
