#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/capability.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/fsuid.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <optional>

#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC::SystemCalls {

namespace {

/// Blocks SIGXFSZ in this thread, and discards one that a write raised meanwhile.
class FileSizeSignalBlock {
public:
    FileSizeSignalBlock() {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGXFSZ);
        sigset_t pending;
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGXFSZ) == 1;
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_before);
    }
    FileSizeSignalBlock(const FileSizeSignalBlock&) = delete;
    FileSizeSignalBlock& operator=(const FileSizeSignalBlock&) = delete;
    ~FileSizeSignalBlock() {
        const int error = errno;
        const timespec now{0, 0};
        if (!m_wasPending) sigtimedwait(&m_signals, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        errno = error;
    }

private:
    sigset_t m_signals;
    sigset_t m_before;
    bool m_wasPending = false;
};

long long GetTime(clockid_t in_clock) {
    timespec time{};
    clock_gettime(in_clock, &time);
    return time.tv_sec * 1000000LL + time.tv_nsec / 1000;
}

/// The capabilities that give access to other users' files.
constexpr std::uint32_t FILE_CAPABILITIES = 1U << CAP_CHOWN | 1U << CAP_DAC_OVERRIDE |
                                            1U << CAP_DAC_READ_SEARCH | 1U << CAP_FOWNER |
                                            1U << CAP_FSETID | 1U << CAP_LINUX_IMMUTABLE;

/// The capabilities that this thread dropped.
thread_local std::uint32_t t_droppedCapabilities = 0;

/// Reads the capabilities of this thread. The C library has no function for that.
bool GetCapabilities(__user_cap_data_struct (&out_data)[2]) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    return syscall(SYS_capget, &header, out_data) == 0;
}

bool SetCapabilities(const __user_cap_data_struct (&in_data)[2]) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    return syscall(SYS_capset, &header, in_data) == 0;
}

bool DropFileCapabilities() {
    __user_cap_data_struct data[2] = {};
    if (!GetCapabilities(data)) return false;
    const std::uint32_t dropped = data[0].effective & FILE_CAPABILITIES;
    data[0].effective &= ~FILE_CAPABILITIES;
    if (dropped != 0 && !SetCapabilities(data)) return false;
    t_droppedCapabilities |= dropped;
    return true;
}

void RaiseFileCapabilities() {
    __user_cap_data_struct data[2] = {};
    if (t_droppedCapabilities == 0 || !GetCapabilities(data)) return;
    data[0].effective |= t_droppedCapabilities;
    SetCapabilities(data);
    t_droppedCapabilities = 0;
}

/// faccessat with the rights that open uses. The C library makes it the system call faccessat2, to
/// which older profiles of containers answer EPERM. The older call checks the rights of the user
/// who started the process, so that it only does where these are the same.
bool HasAccess(int in_directory, const char* in_path, int in_mode) {
    if (faccessat(in_directory, in_path, in_mode, AT_EACCESS) == 0) return true;
    return errno == EPERM && geteuid() == getuid() && getegid() == getgid() &&
           syscall(SYS_faccessat, in_directory, in_path, in_mode) == 0;
}

}  // namespace

int Open(const char* in_path, int in_flags, mode_t in_mode) {
    return open(in_path, in_flags, in_mode);
}

int OpenAt(int in_directory, const char* in_name, int in_flags, mode_t in_mode) {
    return openat(in_directory, in_name, in_flags, in_mode);
}

int Close(int in_handle) { return close(in_handle); }

ssize_t Read(int in_handle, void* out_bytes, std::size_t in_size, off_t in_offset) {
    return pread(in_handle, out_bytes, in_size, in_offset);
}

ssize_t Write(int in_handle, const void* in_bytes, std::size_t in_size) {
    rlimit limit{};
    std::optional<FileSizeSignalBlock> block;
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY) block.emplace();
    return write(in_handle, in_bytes, in_size);
}

int Sync(int in_handle) { return fsync(in_handle); }

int Lock(int in_handle, int in_operation) { return flock(in_handle, in_operation); }

int Stat(const char* in_path, struct stat& out_stat, bool in_followLink) {
    return in_followLink ? stat(in_path, &out_stat) : lstat(in_path, &out_stat);
}

int StatHandle(int in_handle, struct stat& out_stat) { return fstat(in_handle, &out_stat); }

int StatAt(int in_directory, const char* in_name, struct stat& out_stat, bool* out_isMounted) {
    struct statx status {};
    if (out_isMounted == nullptr ||
        statx(in_directory, in_name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) != 0) {
        return fstatat(in_directory, in_name, &out_stat, AT_SYMLINK_NOFOLLOW);
    }
    *out_isMounted = (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    out_stat = {};
    out_stat.st_dev = makedev(status.stx_dev_major, status.stx_dev_minor);
    out_stat.st_ino = status.stx_ino;
    out_stat.st_mode = status.stx_mode;
    out_stat.st_uid = status.stx_uid;
    out_stat.st_gid = status.stx_gid;
    out_stat.st_size = static_cast<off_t>(status.stx_size);
    out_stat.st_mtim = {status.stx_mtime.tv_sec, status.stx_mtime.tv_nsec};
    out_stat.st_ctim = {status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec};
    return 0;
}

int ChangeMode(int in_handle, mode_t in_mode) { return fchmod(in_handle, in_mode); }

int ChangeOwner(int in_handle, uid_t in_user, gid_t in_group) {
    return fchown(in_handle, in_user, in_group);
}

ssize_t GetAttribute(int in_handle, const char* in_name, void* out_bytes, std::size_t in_size) {
    return fgetxattr(in_handle, in_name, out_bytes, in_size);
}

int SetAttribute(int in_handle, const char* in_name, const void* in_bytes, std::size_t in_size) {
    return fsetxattr(in_handle, in_name, in_bytes, in_size, 0);
}

int RemoveAttribute(int in_handle, const char* in_name) { return fremovexattr(in_handle, in_name); }

ssize_t ListAttributes(int in_handle, char* out_names, std::size_t in_size) {
    return flistxattr(in_handle, out_names, in_size);
}

int RenameAt(int in_directory, const char* in_from, const char* in_to, unsigned in_flags) {
    return renameat2(in_directory, in_from, in_directory, in_to, in_flags);
}

int Touch(int in_handle) { return futimens(in_handle, nullptr); }

int LinkAt(int in_directory, const char* in_from, const char* in_to) {
    return linkat(in_directory, in_from, in_directory, in_to, 0);
}

int UnlinkAt(int in_directory, const char* in_name) { return unlinkat(in_directory, in_name, 0); }

bool IsWritable(const char* in_path, int in_directory) {
    if (HasAccess(in_directory, in_path, W_OK)) return true;
    if (errno != ENOENT) return false;
    std::string directory(in_path);
    const std::size_t slash = directory.rfind('/');
    directory = slash == std::string::npos ? "." : directory.substr(0, slash + 1);
    return HasAccess(in_directory, directory.c_str(), W_OK | X_OK);
}

std::string RealPath(const char* in_path) {
    char path[PATH_MAX];
    return realpath(in_path, path) == nullptr ? std::string() : std::string(path);
}

std::string ReadLink(const char* in_path) {
    char target[PATH_MAX];
    const ssize_t size = readlink(in_path, target, sizeof target);
    return size <= 0 ? std::string() : std::string(target, static_cast<std::size_t>(size));
}

std::vector<std::string> ListDirectory(int in_directory, std::string_view in_prefix) {
    std::vector<std::string> names;
    alignas(dirent64) char entries[8192];
    // A new access time would have to be written to the disk. Only the owner can prevent it.
    fcntl(in_directory, F_SETFL, O_NOATIME);
    for (ssize_t size = 1; size > 0;) {
        size = getdents64(in_directory, entries, sizeof entries);
        for (ssize_t at = 0; at < size;) {
            const auto& entry = *reinterpret_cast<const dirent64*>(entries + at);
            const std::string_view name(entry.d_name);
            if (name.starts_with(in_prefix)) names.emplace_back(name);
            at += entry.d_reclen;
        }
    }
    return names;
}

Writers FindWriters(int in_handle) {
    // A program that opens the file for writing meanwhile waits for the lease, and the kernel sends
    // a signal: to this thread only, and one that is ignored by default.
    const f_owner_ex owner{F_OWNER_TID, gettid()};
    if (fcntl(in_handle, F_SETOWN_EX, &owner) != 0 || fcntl(in_handle, F_SETSIG, SIGURG) != 0) {
        return Writers::UNKNOWN;
    }
    return FindWritersAgain(in_handle);
}

Writers FindWritersAgain(int in_handle) {
    if (fcntl(in_handle, F_SETLEASE, F_RDLCK) != 0) {
        if (errno != EAGAIN) return Writers::UNKNOWN;
        const bool isToRead = (fcntl(in_handle, F_GETFL) & O_ACCMODE) == O_RDONLY;
        return isToRead ? Writers::SOME : Writers::UNKNOWN;  // else the handle itself can write
    }
    fcntl(in_handle, F_SETLEASE, F_UNLCK);
    return Writers::NONE;
}

bool GetRandom(void* out_bytes, std::size_t in_size) {
    return getrandom(out_bytes, in_size, 0) == static_cast<ssize_t>(in_size);
}

void SleepMicroseconds(unsigned in_microseconds) {
    const timespec time{in_microseconds / 1000000, in_microseconds % 1000000 * 1000L};
    nanosleep(&time, nullptr);
}

long long GetMonotonicTime() { return GetTime(CLOCK_MONOTONIC); }

long long GetRealTime() { return GetTime(CLOCK_REALTIME); }

// The group changes first, and last on the way back, because that needs the rights of the process.
// Capabilities are dropped last: setfsuid drops them for root, but not for a program that has them
// from its file.
bool UseFileRightsOfUser() {
    setfsgid(getgid());
    setfsuid(getuid());
    if (getuid() == 0 || DropFileCapabilities()) return true;
    UseFileRightsOfProcess();
    return false;
}

void UseFileRightsOfProcess() {
    RaiseFileCapabilities();
    setfsuid(geteuid());
    setfsgid(getegid());
}

}  // namespace Veltrane::ODBC::SystemCalls
