/// Thin wrappers of the system calls that OdbcIniFile uses, so that tests can make the n-th call
/// fail. Results and `errno` are those of the calls named in the comments; nothing is retried.
/// Descriptor and PrivateHandle keep our files off the standard handles.
#ifndef SETUP_SYSTEMCALLS_H
#define SETUP_SYSTEMCALLS_H

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "PlatformAbstraction/base/FileDescriptor.h"

namespace Veltrane::ODBC::SystemCalls {

int Open(const char* in_path, int in_flags, mode_t in_mode);
int OpenAt(int in_directory, const char* in_name, int in_flags, mode_t in_mode);
int Close(int in_handle);
ssize_t Read(int in_handle, void* out_bytes, std::size_t in_size, off_t in_offset);  // pread
/// write; at the file-size limit of the process it fails with EFBIG and does not end the process.
ssize_t Write(int in_handle, const void* in_bytes, std::size_t in_size);
int Sync(int in_handle);                                                   // fsync
int Lock(int in_handle, int in_operation);                                 // flock
int Stat(const char* in_path, struct stat& out_stat, bool in_followLink);  // stat, lstat
int StatHandle(int in_handle, struct stat& out_stat);                      // fstat
/// fstatat, which does not follow a link.
/// @param out_isMounted  unless null: whether something is mounted on the file itself. False also
///                       when the system cannot tell.
int StatAt(int in_directory, const char* in_name, struct stat& out_stat,
           bool* out_isMounted = nullptr);
int ChangeMode(int in_handle, mode_t in_mode);                  // fchmod
int ChangeOwner(int in_handle, uid_t in_user, gid_t in_group);  // fchown
ssize_t GetAttribute(int in_handle, const char* in_name, void* out_bytes, std::size_t in_size);
int SetAttribute(int in_handle, const char* in_name, const void* in_bytes, std::size_t in_size);
int RemoveAttribute(int in_handle, const char* in_name);
/// flistxattr: the names, each with a NUL.
ssize_t ListAttributes(int in_handle, char* out_names, std::size_t in_size);
/// renameat2. Flags: RENAME_EXCHANGE, RENAME_NOREPLACE.
int RenameAt(int in_directory, const char* in_from, const char* in_to, unsigned in_flags);
int Touch(int in_handle);                                              // futimens, now
int LinkAt(int in_directory, const char* in_from, const char* in_to);  // linkat
int UnlinkAt(int in_directory, const char* in_name);                   // unlinkat
/// True when the file can be written, or created if there is none, with the rights that open uses.
/// @param in_directory  of a relative path
bool IsWritable(const char* in_path, int in_directory = AT_FDCWD);
/// realpath; an empty string on failure.
std::string RealPath(const char* in_path);
/// readlink; an empty string on failure, also for anything that is not a link.
std::string ReadLink(const char* in_path);
/// Returns the names in a directory that begin with the prefix; on failure those read so far. Call
/// it once per handle, because the position moves.
std::vector<std::string> ListDirectory(int in_directory, std::string_view in_prefix);

/// Who else has a file open for writing.
enum class Writers {
    NONE,
    SOME,
    UNKNOWN,  ///< the file is another user's, or its file system cannot tell
};
/// Takes a read lease and releases it at once (fcntl). UNKNOWN for a handle that can also write.
Writers FindWriters(int in_handle);
/// The same for a handle for which this thread got NONE before.
Writers FindWritersAgain(int in_handle);

/// getrandom; false on failure.
bool GetRandom(void* out_bytes, std::size_t in_size);
void SleepMicroseconds(unsigned in_microseconds);
/// Microseconds of a clock that never goes back.
long long GetMonotonicTime();
/// Microseconds since 1970, as in the times of files.
long long GetRealTime();

/// Switches the file access of this thread to the rights of the user who started the process
/// (setfsuid, setfsgid, without file capabilities), and back to those of the process.
/// @return false when the rights cannot be dropped
bool UseFileRightsOfUser();
void UseFileRightsOfProcess();

/// The process's lock for short work that a fork must not interrupt: forks wait for the lock, and
/// it is free in the child. The thread that holds it can take it again, and can fork: a host's
/// crash handler forks wherever the crash was, and a host's fork handler can make a request.
class ForkLock {
public:
    ForkLock();
    ForkLock(const ForkLock&) = delete;
    ForkLock& operator=(const ForkLock&) = delete;
    ~ForkLock();
};

/// Moves a handle off the standard handles (0 to 2), in case the host has closed one: otherwise the
/// host would print into the file.
/// @return the handle to use; on failure -1 with errno, and the old handle is closed
int KeepOffStandardHandles(int in_handle);

struct HandleKind : Orska::Support::DescriptorKind {
    static void Close(int in_handle) noexcept { SystemCalls::Close(in_handle); }
};

/// Owns a file descriptor: of a file, a pipe, a terminal or a watch.
class Descriptor : public Orska::Support::OwnedHandle<HandleKind> {
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int in_handle) noexcept : OwnedHandle(KeepOffStandardHandles(in_handle)) {}
};

/// Owns an open file that is closed in forked children. A copy there would hold the file's lock, or
/// keep the file open for writing, until the child ends. In the child the object is closed and its
/// destructor does nothing. (A child made without the fork handlers has the copy until it runs
/// another program.)
class PrivateHandle {
public:
    PrivateHandle() = default;
    explicit PrivateHandle(int in_handle);
    PrivateHandle(PrivateHandle&& in_other) noexcept { Swap(in_other); }
    PrivateHandle& operator=(PrivateHandle&& in_other) noexcept {
        Swap(in_other);
        return *this;
    }
    ~PrivateHandle() { CloseNow(); }
    bool IsOpen() const noexcept { return Get() >= 0; }
    int Get() const noexcept;
    /// Closes the file. Returns the result of close; 0 when it is not open.
    int CloseNow() noexcept;

private:
    void Swap(PrivateHandle& io_other) noexcept;

    Descriptor m_file;
    std::size_t m_slot = 0;  ///< where the child finds it
    unsigned m_forks = 0;    ///< when it was opened
};

}  // namespace Veltrane::ODBC::SystemCalls

#endif
