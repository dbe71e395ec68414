/// One odbc.ini on disk: read whole, or locked, read, and replaced whole.
///
/// The lock is an flock on the file itself. It ends with its holder, even a killed one, works
/// between processes and between threads, and is not inherited by children. The file is replaced by
/// renaming, so a holder checks after locking that the path still leads to the locked file. A file
/// that does not exist cannot be locked: if several processes create it at once, the first one
/// succeeds and the others see its file.
///
/// Replace writes a temporary file beside the real file (symbolic links are followed), gives it the
/// owner, mode, access list and extended attributes of the old file, syncs it, exchanges the two
/// names and syncs the directory. At every moment the path leads to the whole old file or the whole
/// new one, and a reported change survives a power cut. The old file keeps a name until it is
/// certain that no program without the lock has written to it; otherwise it is put back.
///
/// Each use removes the temporary files of killed processes. Objects belong to one thread.
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
    std::string m_operation;  ///< what was tried, as an error text
    int m_error = 0;          ///< errno, or REFUSED

    /// No system call failed; the operation says everything.
    static constexpr int REFUSED = -1;

    bool IsSet() const noexcept { return m_error != 0; }
    /// "/etc/odbc.ini: cannot open: Permission denied"
    std::string Describe() const;
};

class OdbcIniFile {
public:
    /// How long Lock waits for the lock, in microseconds.
    static constexpr long long LOCK_TIMEOUT = 30'000'000;
    /// The same for programs without the lock that are writing to the file.
    static constexpr long long WRITER_TIMEOUT = 5'000'000;
    /// A file larger than this, in bytes, is refused.
    static constexpr off_t MAX_SIZE = 256 << 20;

    explicit OdbcIniFile(std::string in_path) : m_path(std::move(in_path)) {}
    OdbcIniFile(const OdbcIniFile&) = delete;
    OdbcIniFile& operator=(const OdbcIniFile&) = delete;
    ~OdbcIniFile() { Unlock(); }

    /// Reads the file without a lock. Waits while another program is writing to it.
    /// @param out_stat  of the file that was read
    /// @return false, with GetFailure set, on failure; its error is ENOENT when there is no file
    bool Read(std::string& out_bytes, struct stat& out_stat);

    /// Locks the file and reads it. A missing file reads as empty.
    /// @param in_newFileMode  the mode of a file that Replace creates, narrowed by the umask. An
    ///                        empty file gets no wider mode: the driver manager creates such files
    ///                        when it merely reads, open for everybody.
    bool Lock(std::string& out_bytes, mode_t in_newFileMode);
    /// Replaces the locked file, or creates it. On failure the file is unchanged, unless only the
    /// sync of its directory failed. EAGAIN means that another program has written to the file:
    /// repeat the change from Lock on.
    bool Replace(std::string_view in_bytes);
    /// Returns whether to repeat the change from Lock on after a failure. Waits a moment before it
    /// returns true. Returns false after WRITER_TIMEOUT.
    bool IsDueAgain();
    void Unlock() noexcept;
    /// True after Lock when there was no file.
    bool IsNew() const noexcept { return m_isNew; }

    const std::string& GetPath() const noexcept { return m_path; }
    const FileFailure& GetFailure() const noexcept { return m_failure; }
    /// Sets a failure that no system call caused.
    void Refuse(const char* in_reason) { Fail(in_reason, FileFailure::REFUSED); }

    /// Returns the paths of temporary files of an odbc.ini that killed processes have left and that
    /// this process can read. They hold what the file held, passwords included.
    static std::vector<std::string> FindLeftFiles(const std::string& in_path);

private:
    using PrivateHandle = SystemCalls::PrivateHandle;

    bool Fail(const char* in_operation, int in_error);
    bool FailToRead();
    bool FailAsOutdated() { return Fail("written to by another program", EAGAIN); }
    /// True when the file was replaced on another host of a network file system.
    bool IsStale() const noexcept { return m_failure.m_error == ESTALE; }
    bool ReadOnce(std::string& out_bytes, struct stat& out_stat);
    bool LockOnce(std::string& out_bytes, long long in_deadline);
    bool IsAtPath();
    bool OpenToLock();
    bool OpenInDirectory(const std::string& in_path);
    bool OpenDirectory(const std::string& in_path);
    bool IsMissing();
    bool StatAgain(int in_handle, struct stat& out_stat);
    bool WriteAndExchange(std::string_view in_bytes);
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
    SystemCalls::Writers m_writers{};  ///< programs that had the file open then
    mode_t m_newFileMode = 0;
    long long m_repeatsUntil = 0;  ///< 0 before the first repeat
    bool m_isEmpty = false;
    bool m_isTimeTelling = false;  ///< any further write changes the file's time
    bool m_isNew = false;
};

}  // namespace Veltrane::ODBC

#endif
