#include "tests/support/SystemCalls_Fake.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Setup/SystemCalls.h"

namespace Veltrane::Test {

FakeSystemCalls s_systemCalls;

}  // namespace Veltrane::Test

namespace Veltrane::ODBC::SystemCalls {

namespace {

using Test::s_systemCalls;

/// Counts a call; false when it is to fail.
bool Enter(const char* in_name) {
    const std::size_t number = s_systemCalls.m_calls.size();
    s_systemCalls.m_calls.emplace_back(in_name);
    const int error = s_systemCalls.m_before ? s_systemCalls.m_before(in_name, number) : 0;
    if (error != 0) errno = error;
    return error == 0;
}

long long GetTime(clockid_t in_clock) {
    timespec time{};
    ::clock_gettime(in_clock, &time);
    return time.tv_sec * 1000000LL + time.tv_nsec / 1000 + s_systemCalls.m_clockOffset;
}

int Opened(int in_handle) {
    if (in_handle >= 0) ++s_systemCalls.m_openHandles;
    return in_handle;
}

}  // namespace

int Open(const char* in_path, int in_flags, mode_t in_mode) {
    return Enter("open") ? Opened(::open(in_path, in_flags, in_mode)) : -1;
}

int OpenAt(int in_directory, const char* in_name, int in_flags, mode_t in_mode) {
    return Enter("openat") ? Opened(::openat(in_directory, in_name, in_flags, in_mode)) : -1;
}

/// Closes also when it fails, as the system does.
int Close(int in_handle) {
    --s_systemCalls.m_openHandles;
    const int result = ::close(in_handle);
    return Enter("close") ? result : -1;
}

ssize_t Read(int in_handle, void* out_bytes, std::size_t in_size, off_t in_offset) {
    const std::size_t size = std::min(in_size, s_systemCalls.m_maxTransfer);
    return Enter("read") ? ::pread(in_handle, out_bytes, size, in_offset) : -1;
}

ssize_t Write(int in_handle, const void* in_bytes, std::size_t in_size) {
    const std::size_t size = std::min(in_size, s_systemCalls.m_maxTransfer);
    return Enter("write") ? ::write(in_handle, in_bytes, size) : -1;
}

/// Does nothing: no test can see what a disk holds, and it takes longer than all the others.
int Sync(int /*in_handle*/) { return Enter("fsync") ? 0 : -1; }

int Lock(int in_handle, int in_operation) {
    return Enter("flock") ? ::flock(in_handle, in_operation) : -1;
}

int Stat(const char* in_path, struct stat& out_stat, bool in_followLink) {
    if (!Enter("stat")) return -1;
    return in_followLink ? ::stat(in_path, &out_stat) : ::lstat(in_path, &out_stat);
}

int StatHandle(int in_handle, struct stat& out_stat) {
    return Enter("fstat") ? ::fstat(in_handle, &out_stat) : -1;
}

int StatAt(int in_directory, const char* in_name, struct stat& out_stat) {
    if (!Enter("fstatat")) return -1;
    return ::fstatat(in_directory, in_name, &out_stat, AT_SYMLINK_NOFOLLOW);
}

int ChangeMode(int in_handle, mode_t in_mode) {
    return Enter("fchmod") ? ::fchmod(in_handle, in_mode) : -1;
}

int ChangeOwner(int in_handle, uid_t in_user, gid_t in_group) {
    return Enter("fchown") ? ::fchown(in_handle, in_user, in_group) : -1;
}

ssize_t GetAttribute(int in_handle, const char* in_name, void* out_bytes, std::size_t in_size) {
    return Enter("fgetxattr") ? ::fgetxattr(in_handle, in_name, out_bytes, in_size) : -1;
}

int SetAttribute(int in_handle, const char* in_name, const void* in_bytes, std::size_t in_size) {
    return Enter("fsetxattr") ? ::fsetxattr(in_handle, in_name, in_bytes, in_size, 0) : -1;
}

int RemoveAttribute(int in_handle, const char* in_name) {
    return Enter("fremovexattr") ? ::fremovexattr(in_handle, in_name) : -1;
}

ssize_t ListAttributes(int in_handle, char* out_names, std::size_t in_size) {
    return Enter("flistxattr") ? ::flistxattr(in_handle, out_names, in_size) : -1;
}

int RenameAt(int in_directory, const char* in_from, const char* in_to, unsigned in_flags) {
    if (!Enter("rename")) return -1;
    if (in_flags != 0 && !s_systemCalls.m_hasRenameFlags) {
        errno = EINVAL;
        return -1;
    }
    return ::renameat2(in_directory, in_from, in_directory, in_to, in_flags);
}

int Touch(int in_handle) { return Enter("futimens") ? ::futimens(in_handle, nullptr) : -1; }

int LinkAt(int in_directory, const char* in_from, const char* in_to) {
    return Enter("link") ? ::linkat(in_directory, in_from, in_directory, in_to, 0) : -1;
}

int UnlinkAt(int in_directory, const char* in_name) {
    return Enter("unlink") ? ::unlinkat(in_directory, in_name, 0) : -1;
}

/// The directory of a new file is always one that the tests may write to.
bool IsWritable(const char* in_path) {
    return Enter("access") && (::access(in_path, W_OK) == 0 || errno == ENOENT);
}

std::string RealPath(const char* in_path) {
    char path[PATH_MAX];
    const bool isFound = Enter("realpath") && ::realpath(in_path, path) != nullptr;
    return isFound ? path : "";
}

std::string ReadLink(const char* in_path) {
    char target[PATH_MAX];
    const ssize_t size = Enter("readlink") ? ::readlink(in_path, target, sizeof target) : -1;
    return size <= 0 ? std::string() : std::string(target, static_cast<std::size_t>(size));
}

bool IsMounted(int /*in_handle*/) { return !Enter("statx"); }

Writers FindWriters(int in_handle) {
    if (!Enter("lease")) return Writers::UNKNOWN;
    if (::fcntl(in_handle, F_SETLEASE, F_RDLCK) != 0) {
        return errno == EAGAIN ? Writers::SOME : Writers::UNKNOWN;
    }
    ::fcntl(in_handle, F_SETLEASE, F_UNLCK);
    return Writers::NONE;
}

Writers FindWritersAgain(int in_handle) { return FindWriters(in_handle); }

std::vector<std::string> ListDirectory(int in_directory, std::string_view in_prefix) {
    std::vector<std::string> names;
    if (!Enter("readdir")) return names;
    DIR* const directory = ::fdopendir(::openat(in_directory, ".", O_RDONLY | O_DIRECTORY));
    if (directory == nullptr) return names;
    while (const dirent* const entry = ::readdir(directory)) {
        const std::string_view name(entry->d_name);
        if (name.starts_with(in_prefix)) names.emplace_back(name);
    }
    ::closedir(directory);
    return names;
}

bool GetRandom(void* out_bytes, std::size_t in_size) {
    return Enter("getrandom") &&
           ::getrandom(out_bytes, in_size, 0) == static_cast<ssize_t>(in_size);
}

void SleepMicroseconds(unsigned in_microseconds) {
    if (s_systemCalls.m_isSleeping) {
        ::usleep(in_microseconds);
    } else {
        s_systemCalls.m_clockOffset += in_microseconds + s_systemCalls.m_sleepBonus;
    }
}

long long GetMonotonicTime() { return GetTime(CLOCK_MONOTONIC); }

long long GetRealTime() { return GetTime(CLOCK_REALTIME); }

bool UseFileRightsOfUser() { return true; }

void UseFileRightsOfProcess() {}

}  // namespace Veltrane::ODBC::SystemCalls
