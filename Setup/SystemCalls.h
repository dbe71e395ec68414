/// The system calls under OdbcIniFile, one thin function each, so that tests can make the n-th call
/// fail. Results and `errno` are those of the calls named in the comments; nothing is retried here.
/// The owners of open files see to it that no file of ours is ever a standard handle.
#ifndef SETUP_SYSTEMCALLS_H
#define SETUP_SYSTEMCALLS_H

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
/// write, which fails with EFBIG at the file-size limit of the process instead of ending the
/// process.
ssize_t Write(int in_handle, const void* in_bytes, std::size_t in_size);
int Sync(int in_handle);                                                   // fsync
int Lock(int in_handle, int in_operation);                                 // flock
int Stat(const char* in_path, struct stat& out_stat, bool in_followLink);  // stat, lstat
int StatHandle(int in_handle, struct stat& out_stat);                      // fstat
int StatAt(int in_directory, const char* in_name, struct stat& out_stat);  // fstatat, no following
int ChangeMode(int in_handle, mode_t in_mode);                             // fchmod
int ChangeOwner(int in_handle, uid_t in_user, gid_t in_group);             // fchown
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
/// True when the file may be written, or, when there is none, made; by the rights that opening it
/// would have.
bool IsWritable(const char* in_path);
/// True when something is mounted on the file itself. False also where the system cannot tell.
bool IsMounted(int in_handle);
/// realpath; an empty string on failure.
std::string RealPath(const char* in_path);
/// readlink; an empty string on failure, as for everything that is no link.
std::string ReadLink(const char* in_path);
/// The names in a directory that begin so; those that could be read when one fails. Once for each
/// handle, whose position moves.
std::vector<std::string> ListDirectory(int in_directory, std::string_view in_prefix);

/// Who else has a file open for writing.
enum class Writers {
    NONE,
    SOME,
    UNKNOWN,  ///< the file is somebody else's, or its file system cannot tell
};
/// Asks with a read lease, which is given back at once (fcntl). A handle that is not for reading
/// only gives UNKNOWN.
Writers FindWriters(int in_handle);
/// The same for a handle about which this thread has asked before, and got NONE.
Writers FindWritersAgain(int in_handle);

/// getrandom; false when no random bytes can be had.
bool GetRandom(void* out_bytes, std::size_t in_size);
void SleepMicroseconds(unsigned in_microseconds);
/// Microseconds of a clock that never goes back.
long long GetMonotonicTime();
/// Microseconds since 1970, as the times of files count.
long long GetRealTime();

/// Makes files accessible to this thread with the rights of the user who started the process, who
/// may have fewer than the process (setfsuid, setfsgid, and without the capabilities that open
/// files of others); and with those of the process again.
/// @return false when the rights cannot be given up
bool UseFileRightsOfUser();
void UseFileRightsOfProcess();

/// The process's lock for short work that a forked child must find undone or done: forks wait for
/// its end, and a child finds it free. Not to be taken twice by a thread.
class ForkLock {
public:
    ForkLock();
    ForkLock(const ForkLock&) = delete;
    ForkLock& operator=(const ForkLock&) = delete;
    ~ForkLock();
};

/// Moves a handle below 3 out of the place of a standard handle that the host has closed: what the
/// host prints would go into the file.
/// @return the handle to use; -1 with errno, and the old one closed, when there is no other
int KeepOffStandardHandles(int in_handle);

struct HandleKind : Orska::Support::DescriptorKind {
    static void Close(int in_handle) noexcept { SystemCalls::Close(in_handle); }
};

/// Owns a descriptor: of a file, a pipe, a terminal or a watch.
class Descriptor : public Orska::Support::OwnedHandle<HandleKind> {
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int in_handle) noexcept : OwnedHandle(KeepOffStandardHandles(in_handle)) {}
};

/// Owns an open file that a child of this process does not get. A copy in a child would hold the
/// file's lock, or keep the file open for writing, as long as the child lives. In a child that a
/// fork made meanwhile the object is closed, and its end does nothing. (A child made without the
/// handlers of fork has the copy until it runs another program.)
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
    /// The result of closing it; 0 when it is not open.
    int CloseNow() noexcept;

private:
    void Swap(PrivateHandle& io_other) noexcept;

    Descriptor m_file;
    std::size_t m_slot = 0;  ///< where the child finds it
    unsigned m_forks = 0;    ///< when it was opened
};

}  // namespace Veltrane::ODBC::SystemCalls

#endif
