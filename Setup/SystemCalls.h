/// The system calls under OdbcIniFile, one thin function each, so that tests can make the n-th call
/// fail. Results and `errno` are those of the calls named in the comments; nothing is retried here.
#ifndef SETUP_SYSTEMCALLS_H
#define SETUP_SYSTEMCALLS_H

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

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
int RenameAt(int in_directory, const char* in_from, const char* in_to);  // renameat
int UnlinkAt(int in_directory, const char* in_name);                     // unlinkat
/// True when the file may be written, or, when there is none, made; by the rights that opening it
/// would have.
bool IsWritable(const char* in_path);
/// realpath; an empty string on failure.
std::string RealPath(const char* in_path);
/// The names in a directory; those that could be read when one fails.
std::vector<std::string> ListDirectory(int in_directory);
/// getrandom; false when no random bytes can be had.
bool GetRandom(void* out_bytes, std::size_t in_size);
void SleepMicroseconds(unsigned in_microseconds);
/// Microseconds of a clock that never goes back.
long long GetMonotonicTime();

/// Makes files accessible to this thread with the rights of the user who started the process, who
/// may have fewer than the process (setfsuid, setfsgid); and with those of the process again.
void UseFileRightsOfUser();
void UseFileRightsOfProcess();

/// Owns an open file.
class FileHandle {
public:
    FileHandle() = default;
    explicit FileHandle(int in_handle) : m_handle(in_handle) {}
    FileHandle(FileHandle&& in_other) noexcept : m_handle(std::exchange(in_other.m_handle, -1)) {}
    FileHandle& operator=(FileHandle&& in_other) noexcept {
        std::swap(m_handle, in_other.m_handle);
        return *this;
    }
    ~FileHandle() {
        if (IsOpen()) Close(m_handle);
    }
    bool IsOpen() const noexcept { return m_handle >= 0; }
    int Get() const noexcept { return m_handle; }
    /// Gives the file away, to be closed by the caller.
    int Release() noexcept { return std::exchange(m_handle, -1); }

private:
    int m_handle = -1;
};

}  // namespace Veltrane::ODBC::SystemCalls

#endif
