/// One odbc.ini on disk: read whole, or locked, read, and replaced whole.
///
/// The lock is an flock of the file itself. It ends with its holder, whatever way that goes, works
/// between processes and between threads, and does not pass to children. Because the file is
/// replaced by renaming, a holder checks after locking that the path still leads to the file that
/// it locked. A file that does not exist has no lock: of those who make it at once one is first,
/// and the others see that it is there.
///
/// Replacing writes a temporary file in the directory of the real file (symbolic links are
/// followed), with the owner, mode, access list and extended attributes of the old one, syncs it,
/// exchanges the two names, and syncs the directory: at every moment the file is the old one or the
/// new one, whole, and what was reported as done survives a power cut. The old file keeps a name
/// until it is certain that no program without the lock has written to it meanwhile; else it goes
/// back to its place.
///
/// Each use removes temporary files that a process which was killed has left. Objects belong to one
/// thread.
#ifndef SETUP_ODBCINIFILE_H
#define SETUP_ODBCINIFILE_H

#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

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
    /// The same for programs without the lock that are writing to the file.
    static constexpr long long WRITER_TIMEOUT = 5'000'000;
    /// A file larger than this, in bytes, is refused.
    static constexpr off_t MAX_SIZE = 256 << 20;

    explicit OdbcIniFile(std::string in_path) : m_path(std::move(in_path)) {}
    OdbcIniFile(const OdbcIniFile&) = delete;
    OdbcIniFile& operator=(const OdbcIniFile&) = delete;
    ~OdbcIniFile() { Unlock(); }

    /// Reads the file as it is now, without a lock, when nobody is writing to it.
    /// @param out_stat  which file it was
    /// @return false, with GetFailure set, when that fails; ENOENT when there is none
    bool Read(std::string& out_bytes, struct stat& out_stat);

    /// Locks the file and reads it. One that does not exist reads as empty.
    /// @param in_newFileMode  of a file that Replace makes, narrowed by the umask of the process.
    ///                        An empty file gets no wider one: the driver manager makes such
    ///                        files when it merely reads, open for everybody.
    bool Lock(std::string& out_bytes, mode_t in_newFileMode);
    /// Replaces the locked file, or makes it. On failure the file is as it was; EAGAIN means that
    /// it is outdated and the change due again from Lock on. One failure comes after the file is
    /// the new one: that of syncing its directory.
    bool Replace(std::string_view in_bytes);
    /// After a failure: whether the change is due again from Lock on. Waits a moment then, and ends
    /// after WRITER_TIMEOUT.
    bool IsDueAgain();
    void Unlock() noexcept;
    /// True after Lock when there was no file.
    bool IsNew() const noexcept { return m_isNew; }

    const std::string& GetPath() const noexcept { return m_path; }
    const FileFailure& GetFailure() const noexcept { return m_failure; }
    /// A failure of this file that no system call caused.
    void Refuse(const char* in_reason) { Fail(in_reason, FileFailure::REFUSED); }

    /// The paths of temporary files of an odbc.ini that a killed process has left and that this one
    /// may read. They hold what the file held, passwords too.
    static std::vector<std::string> FindLeftFiles(const std::string& in_path);

private:
    using PrivateHandle = SystemCalls::PrivateHandle;

    bool Fail(const char* in_operation, int in_error);
    bool FailToRead();
    bool FailAsOutdated() { return Fail("written to by another program", EAGAIN); }
    /// The failure of a handle whose file was replaced on another host of a network file system.
    bool IsStale() const noexcept { return m_failure.m_error == ESTALE; }
    bool ReadOnce(std::string& out_bytes, struct stat& out_stat);
    bool LockOnce(std::string& out_bytes, long long in_deadline);
    bool OpenToLock();
    bool WaitForLock(long long in_deadline);
    bool WriteAndExchange(std::string_view in_bytes);
    bool OpenDirectory();
    bool IsInPlace();
    bool ReadAtRest(int in_handle, struct stat& io_stat, std::string& out_bytes);
    bool ReadAll(int in_handle, const struct stat& in_stat, std::string& out_bytes);
    std::vector<std::string> FindLeft(bool in_isToGo) const;
    bool IsOutdated();
    bool CreateTemporary(PrivateHandle& out_handle, std::string& out_name);
    bool LockTemporary(const std::string& in_name);
    bool WriteTemporary(int in_handle, std::string_view in_bytes);
    bool CopyAttributes(int in_handle);
    bool Finish(PrivateHandle& io_handle);
    bool PutInPlace(std::string& io_name);
    bool Rename(const std::string& in_name, unsigned in_flags);
    bool PutNew(const std::string& in_name);
    bool FailToReplace();
    bool IsAsRead(const std::string& in_name);
    bool PutBack(std::string& io_name);
    bool SyncDirectory();

    std::string m_path;
    FileFailure m_failure;
    PrivateHandle m_file;              ///< locked; closed when there is no file
    PrivateHandle m_temporary;         ///< locked, for reading
    PrivateHandle m_directory;         ///< of the real file
    std::string m_name;                ///< of the real file, in its directory
    struct stat m_stat {};             ///< of the file as it was read
    struct stat m_written {};          ///< of the temporary file
    std::string m_bytes;               ///< the file as it was read
    SystemCalls::Writers m_writers{};  ///< that had the file open then
    mode_t m_newFileMode = 0;
    long long m_repeatsUntil = 0;  ///< 0 before the first repeat
    bool m_isEmpty = false;
    bool m_isTimeTelling = false;  ///< nobody can write to it again without changing its time
    bool m_isNew = false;
};

}  // namespace Veltrane::ODBC

#endif
