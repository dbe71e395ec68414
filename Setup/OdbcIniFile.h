/// One odbc.ini on disk: read whole, or locked, read, and replaced whole.
///
/// The lock is an flock of the file itself. It ends with its holder, whatever way that goes, and
/// works between processes and between threads. Because the file is replaced by renaming, a holder
/// checks after locking that the path still leads to the file that it locked. Replacing writes a
/// temporary file in the directory of the real file (symbolic links are followed), with the owner,
/// mode and access list of the old one, syncs it and renames it: at every moment the file is the
/// old one or the new one, whole. Objects belong to one thread.
#ifndef SETUP_ODBCINIFILE_H
#define SETUP_ODBCINIFILE_H

#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC {

/// What went wrong with a file.
struct FileFailure {
    std::string m_path;
    std::string m_operation;  ///< what was tried, for people
    int m_error = 0;          ///< errno, or REFUSED

    /// No system call failed: the operation says all.
    static constexpr int REFUSED = -1;

    bool IsSet() const noexcept { return m_error != 0; }
    /// "/etc/odbc.ini: cannot open: Permission denied"
    std::string Describe() const;
};

class OdbcIniFile {
public:
    /// How long a lock is waited for, in microseconds.
    static constexpr long long LOCK_TIMEOUT = 30'000'000;
    /// A file larger than this, in bytes, is refused.
    static constexpr off_t MAX_SIZE = 256 << 20;

    explicit OdbcIniFile(std::string in_path) : m_path(std::move(in_path)) {}
    OdbcIniFile(const OdbcIniFile&) = delete;
    OdbcIniFile& operator=(const OdbcIniFile&) = delete;
    ~OdbcIniFile() { Unlock(); }

    /// Reads the file as it is now, without a lock.
    /// @param out_stat  which file it was
    /// @return false, with GetFailure set, when that fails; ENOENT when there is none
    bool Read(std::string& out_bytes, struct stat& out_stat);

    /// Locks the file and reads it. A file that does not exist is created, empty, with a mode that
    /// the process's umask narrows; Unlock removes it again when it was not replaced.
    bool Lock(std::string& out_bytes, mode_t in_newFileMode);
    /// Replaces the locked file. On failure the file is as it was; EAGAIN means that it is
    /// outdated.
    bool Replace(std::string_view in_bytes);
    void Unlock() noexcept;
    /// True while locked, when Lock has created the file.
    bool IsNew() const noexcept { return m_isCreated; }

    const std::string& GetPath() const noexcept { return m_path; }
    const FileFailure& GetFailure() const noexcept { return m_failure; }
    /// A failure of this file that has no system call behind it.
    void Refuse(const char* in_reason) { Fail(in_reason, FileFailure::REFUSED); }

private:
    bool Fail(const char* in_operation, int in_error);
    bool FailToRead();
    /// The failure of a handle whose file was replaced on another host of a network file system.
    bool IsStale() const noexcept { return m_failure.m_error == ESTALE; }
    bool ReadOnce(std::string& out_bytes, struct stat& out_stat);
    bool LockOnce(std::string& out_bytes, mode_t in_newFileMode, long long in_deadline);
    bool OpenOrCreate(mode_t in_newFileMode);
    bool WaitForLock(long long in_deadline);
    bool FindPlace();
    bool ReadAll(int in_handle, const struct stat& in_stat, std::string& out_bytes);
    /// True when something that does not know the lock has written to the file since Lock.
    bool IsOutdated();
    bool IsAsRead();
    void RemoveStaleFiles();
    bool CreateTemporary(SystemCalls::FileHandle& out_handle, std::string& out_name);
    bool WriteTemporary(int in_handle, std::string_view in_bytes);
    bool CopyAttributes(int in_handle);
    bool Exchange(const std::string& in_name);

    std::string m_path;
    FileFailure m_failure;
    SystemCalls::FileHandle m_file;       ///< locked
    SystemCalls::FileHandle m_directory;  ///< of the real file
    std::string m_name;                   ///< of the real file, in its directory
    struct stat m_stat {};                ///< of the file as it was read
    std::string m_bytes;                  ///< the same
    bool m_isCreated = false;             ///< by Lock
};

}  // namespace Veltrane::ODBC

#endif
