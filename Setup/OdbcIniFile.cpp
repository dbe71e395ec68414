#include "Setup/OdbcIniFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/FileAttributes.h"
#include "Setup/FileState.h"

namespace Veltrane::ODBC {

namespace {

using Orska::Support::DescribeSystemError;
using namespace FileState;
using SystemCalls::PrivateHandle;
using SystemCalls::Writers;

constexpr int OPEN_FLAGS = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr char TEMPORARY_MARK[] = ".veltrane-";
constexpr std::size_t RANDOM_DIGITS = 16;
/// Leaves room for the mark and the digits in a name of 255 bytes.
constexpr std::size_t MAX_NAME_PART = 200;
/// How often to read a file that is replaced during the read.
constexpr int MAX_READS = 8;
constexpr int MAX_LINKS = 40;
/// A mounted file could only be written in place. An interrupted write would lose it, and other
/// programs would read half of it.
constexpr char MOUNTED[] =
    "cannot be replaced, because the file itself is mounted (mount its directory instead)";
constexpr std::size_t SPARE_ROOM = 4096;

/// Removes the temporary file at the end of the scope, even when memory runs out.
struct Remover {
    const PrivateHandle& m_directory;
    const std::string& m_name;  ///< empty for none
    ~Remover() {
        if (!m_name.empty()) SystemCalls::UnlinkAt(m_directory.Get(), m_name.c_str());
    }
};

std::string TemporaryPrefix(const std::string& in_name) {
    std::string prefix;
    prefix.reserve(in_name.size() + sizeof TEMPORARY_MARK + RANDOM_DIGITS);
    return prefix.append(in_name, 0, MAX_NAME_PART).append(TEMPORARY_MARK);
}

std::string TemporaryName(const std::string& in_name, std::uint64_t in_random) {
    char digits[RANDOM_DIGITS];
    for (char& digit : digits) {
        digit = "0123456789abcdef"[in_random & 15];
        in_random >>= 4;
    }
    return TemporaryPrefix(in_name).append(digits, sizeof digits);
}

void Pause() {
    std::uint16_t random = 0;
    SystemCalls::GetRandom(&random, sizeof random);
    SystemCalls::SleepMicroseconds(200 + random % 2000);
}

bool IsTemporaryName(const std::string& in_name, const std::string& in_prefix) {
    return in_name.size() == in_prefix.size() + RANDOM_DIGITS &&
           in_name.find_first_not_of("0123456789abcdef", in_prefix.size()) == std::string::npos;
}

/// Unlocks explicitly: a copy of the handle can live on in a child made without our fork handlers.
void Release(PrivateHandle& io_handle) noexcept {
    if (io_handle.IsOpen()) SystemCalls::Lock(io_handle.Get(), LOCK_UN);
    io_handle = PrivateHandle();
}

bool TryLock(const PrivateHandle& in_handle) {
    int result = 0;
    do {
        result = SystemCalls::Lock(in_handle.Get(), LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

/// Locks a file unless another program has. Network file systems grant a write lock only on a
/// handle that is open for writing.
/// @param in_path  for openat, to open the file again for writing
bool LockNow(PrivateHandle& io_handle, int in_directory, const char* in_path, int in_flags) {
    if (TryLock(io_handle)) return true;
    if (errno != EBADF) return false;
    io_handle = PrivateHandle(
        SystemCalls::OpenAt(in_directory, in_path, O_RDWR | in_flags | OPEN_FLAGS, 0));
    return io_handle.IsOpen() && TryLock(io_handle);
}

/// Resolves symbolic links in the last part of a path. The result shows the directory that the file
/// is in, or will be created in: O_EXCL and rename follow no links. Empty, with errno, on failure.
std::string FollowLinks(std::string in_path) {
    for (int i = 0; i < MAX_LINKS; ++i) {
        const std::string target = SystemCalls::ReadLink(in_path.c_str());
        if (target.empty()) return errno == EINVAL || errno == ENOENT ? in_path : std::string();
        if (target.front() == '/') in_path.clear();
        in_path = in_path.substr(0, in_path.rfind('/') + 1) + target;
    }
    return in_path;
}

/// True when the file system, the kernel or the profile of a container does not support the call.
bool IsUnsupported(int in_error) {
    return in_error == EINVAL || in_error == ENOSYS || in_error == ENOTSUP || in_error == EPERM;
}

}  // namespace

std::string FileFailure::Describe() const {
    std::string path = m_path;
    // A path must not break the line that it is shown in.
    for (char& byte : path) {
        if (static_cast<unsigned char>(byte) < ' ') byte = '?';
    }
    const std::string text = path.empty() ? m_operation : path + ": " + m_operation;
    return m_error == REFUSED
               ? text
               : text + ": " + DescribeSystemError(static_cast<std::uint32_t>(m_error));
}

bool OdbcIniFile::Fail(const char* in_operation, int in_error) {
    m_failure = {m_path, in_operation, in_error};
    return false;
}

/// On some network file systems ENOENT for an open file means that it was replaced.
bool OdbcIniFile::FailToRead() { return Fail("cannot read", errno == ENOENT ? ESTALE : errno); }

bool OdbcIniFile::Read(std::string& out_bytes, struct stat& out_stat) {
    for (int attempts = 1;; ++attempts) {
        m_failure = {};
        if (ReadOnce(out_bytes, out_stat)) break;
        if (!IsStale() || attempts == MAX_READS) return false;
    }
    // The read succeeds even if leftover files cannot be removed.
    if (OpenDirectory(FollowLinks(m_path))) FindLeft(true);
    m_failure = {};
    m_directory = PrivateHandle();
    return true;
}

bool OdbcIniFile::ReadOnce(std::string& out_bytes, struct stat& out_stat) {
    const PrivateHandle file(SystemCalls::Open(m_path.c_str(), O_RDONLY | OPEN_FLAGS, 0));
    if (!file.IsOpen()) return Fail("cannot open", errno);
    if (SystemCalls::StatHandle(file.Get(), out_stat) != 0) return FailToRead();
    return ReadAtRest(file.Get(), out_stat, out_bytes);
}

/// Waits for programs that write the file in place. They empty it first, and a read in between
/// would miss the rest.
/// @param io_stat  in: of the file now; out: of the file as it was read
bool OdbcIniFile::ReadAtRest(int in_handle, struct stat& io_stat, std::string& out_bytes) {
    const long long begin = SystemCalls::GetMonotonicTime();
    for (;;) {
        struct stat after {};
        if (!ReadAll(in_handle, io_stat, out_bytes)) return false;
        m_writers = SystemCalls::FindWriters(in_handle);
        if (!StatAgain(in_handle, after)) return false;
        if (IsSameVersion(io_stat, after) && !IsBeingWritten(m_writers, after, begin)) {
            m_isTimeTelling = m_writers == Writers::NONE && IsTimeTelling(after);
            return true;
        }
        if (SystemCalls::GetMonotonicTime() > begin + WRITER_TIMEOUT) {
            return Fail("another program keeps writing to it", ETIMEDOUT);
        }
        Pause();
        if (SystemCalls::StatHandle(in_handle, io_stat) != 0) return FailToRead();
    }
}

/// Reads the state of an open file. The locked file also has to be at its path still.
/// @return false, with no failure set, when another file or none is at that path
bool OdbcIniFile::StatAgain(int in_handle, struct stat& out_stat) {
    if (!m_file.IsOpen()) {
        return SystemCalls::StatHandle(in_handle, out_stat) == 0 || FailToRead();
    }
    bool isMounted = false;
    if (SystemCalls::StatAt(m_directory.Get(), m_name.c_str(), out_stat, &isMounted) != 0) {
        return errno != ENOENT && Fail("cannot read", errno);
    }
    if (!IsSameFile(m_stat, out_stat)) return false;
    return !isMounted || Fail(MOUNTED, EBUSY);
}

bool OdbcIniFile::ReadAll(int in_handle, const struct stat& in_stat, std::string& out_bytes) {
    if (!S_ISREG(in_stat.st_mode)) return Fail("not a regular file", FileFailure::REFUSED);
    if (in_stat.st_size > MAX_SIZE) return Fail("cannot read", EFBIG);
    const auto expected = static_cast<std::size_t>(in_stat.st_size);
    // Reserves room for what a change adds. One byte more than expected shows whether the file has
    // grown; if it has changed in another way, the caller sees that from its size and time.
    out_bytes.reserve(expected + SPARE_ROOM);
    out_bytes.resize(expected + 1);
    std::size_t size = 0;
    for (;;) {
        const ssize_t count = SystemCalls::Read(in_handle, out_bytes.data() + size,
                                                out_bytes.size() - size, static_cast<off_t>(size));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return FailToRead();
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
        if (static_cast<off_t>(size) > MAX_SIZE) return Fail("cannot read", EFBIG);
        if (size == expected) break;
        if (size == out_bytes.size()) out_bytes.resize(size + SPARE_ROOM);
    }
    out_bytes.resize(size);
    return true;
}

bool OdbcIniFile::Lock(std::string& out_bytes, mode_t in_newFileMode) {
    const long long deadline = SystemCalls::GetMonotonicTime() + LOCK_TIMEOUT;
    m_newFileMode = in_newFileMode;
    for (;;) {
        Unlock();
        m_failure = {};
        if (LockOnce(out_bytes, deadline)) break;
        if (m_failure.IsSet() && !IsStale()) return false;
        if (SystemCalls::GetMonotonicTime() > deadline) {
            return !m_failure.IsSet() && Fail("locked by another program", ETIMEDOUT);
        }
        if (IsStale()) Pause();
    }
    m_isEmpty = out_bytes.empty();
    if (!m_isTimeTelling) m_bytes = out_bytes;
    FindLeft(true);
    return true;
}

/// @return false, with no failure set, when the file stays locked, or was created, removed or
///         replaced meanwhile
bool OdbcIniFile::LockOnce(std::string& out_bytes, long long in_deadline) {
    if (!OpenToLock()) return false;
    out_bytes.clear();
    if (m_isNew) return IsMissing();
    // A blocking flock has no time limit without signals, and any reader of the file could hold us
    // up for ever.
    while (!LockNow(m_file, m_directory.Get(), m_name.c_str(), O_NOFOLLOW)) {
        if (!m_file.IsOpen()) return errno != ENOENT && Fail("cannot open for writing", errno);
        if (errno != EWOULDBLOCK) return Fail("cannot lock", errno);
        if (SystemCalls::GetMonotonicTime() > in_deadline) return false;
        Pause();
        if (!IsAtPath()) return false;
    }
    if (SystemCalls::StatHandle(m_file.Get(), m_stat) != 0) return FailToRead();
    return ReadAtRest(m_file.Get(), m_stat, out_bytes);
}

/// Looks without opening: a request in another process tells the config mode from which files are
/// opened, and many that wait would mislead it.
bool OdbcIniFile::IsAtPath() {
    struct stat now {};
    return SystemCalls::StatHandle(m_file.Get(), m_stat) == 0 &&
           SystemCalls::Stat(m_path.c_str(), now, true) == 0 && IsSameFile(m_stat, now);
}

/// Opens the file for reading only: other requests would take a writer for a program that is
/// changing it. Checks the right to write, because the directory alone could allow replacing a
/// read-only file.
bool OdbcIniFile::OpenToLock() {
    if (!OpenInDirectory(m_path)) return false;
    if (!m_file.IsOpen() && errno == ELOOP && !OpenInDirectory(FollowLinks(m_path))) return false;
    m_isNew = !m_file.IsOpen() && errno == ENOENT;
    if (!m_isNew && !m_file.IsOpen()) return Fail("cannot open for writing", errno);
    if (SystemCalls::IsWritable(m_name.c_str(), m_directory.Get())) return true;
    return Fail(m_isNew ? "cannot create" : "cannot open for writing", errno);
}

/// Opens the directory and, unless that fails, tries to open the file in it. A link fails with
/// ELOOP.
bool OdbcIniFile::OpenInDirectory(const std::string& in_path) {
    if (!OpenDirectory(in_path)) {
        if (in_path.empty()) return Fail("cannot resolve", errno);
        return Fail(errno == ENOENT ? "cannot create" : "cannot open the directory", errno);
    }
    m_file = PrivateHandle(SystemCalls::OpenAt(m_directory.Get(), m_name.c_str(),
                                               O_RDONLY | O_NOFOLLOW | OPEN_FLAGS, 0));
    return true;
}

/// @param in_path  empty if the links of the path cannot be followed
/// @return false, with errno, on failure
bool OdbcIniFile::OpenDirectory(const std::string& in_path) {
    if (in_path.empty()) return false;
    const std::size_t slash = in_path.rfind('/');
    m_name = in_path.substr(slash + 1);
    if (m_name.empty()) m_name = ".";
    const std::string directory = slash == std::string::npos ? "." : in_path.substr(0, slash + 1);
    m_directory =
        PrivateHandle(SystemCalls::Open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    return m_directory.IsOpen();
}

/// @return false, with no failure set, when a file is there
bool OdbcIniFile::IsMissing() {
    struct stat inPlace {};
    if (SystemCalls::StatAt(m_directory.Get(), m_name.c_str(), inPlace) == 0) return false;
    return errno == ENOENT || Fail("cannot read", errno);
}

/// Returns the names of temporary files that killed processes have left. A living process holds a
/// lock on its own.
std::vector<std::string> OdbcIniFile::FindLeft(bool in_isToGo) const {
    const std::string prefix = TemporaryPrefix(m_name);
    std::vector<std::string> left;
    for (const std::string& name : SystemCalls::ListDirectory(m_directory.Get(), prefix)) {
        if (!IsTemporaryName(name, prefix)) continue;
        PrivateHandle file(SystemCalls::OpenAt(m_directory.Get(), name.c_str(),
                                               O_RDONLY | O_NOFOLLOW | OPEN_FLAGS, 0));
        if (!file.IsOpen() || !LockNow(file, m_directory.Get(), name.c_str(), O_NOFOLLOW)) continue;
        left.push_back(name);
        if (in_isToGo) SystemCalls::UnlinkAt(m_directory.Get(), name.c_str());
        Release(file);
    }
    return left;
}

std::vector<std::string> OdbcIniFile::FindLeftFiles(const std::string& in_path) {
    OdbcIniFile file(in_path);
    const std::string path = FollowLinks(in_path);
    if (!file.OpenDirectory(path)) return {};
    std::vector<std::string> paths = file.FindLeft(false);
    for (std::string& name : paths) name.insert(0, path, 0, path.rfind('/') + 1);
    return paths;
}

bool OdbcIniFile::IsDueAgain() {
    if (m_failure.m_error != EAGAIN) return false;
    const long long now = SystemCalls::GetMonotonicTime();
    if (m_repeatsUntil == 0) m_repeatsUntil = now + WRITER_TIMEOUT;
    if (now > m_repeatsUntil) return false;
    Unlock();
    Pause();
    return true;
}

void OdbcIniFile::Unlock() noexcept {
    m_isNew = false;
    m_bytes.clear();
    Release(m_temporary);
    Release(m_file);
    m_directory = PrivateHandle();
}

bool OdbcIniFile::Replace(std::string_view in_bytes) {
    if (in_bytes.size() > MAX_SIZE) return Fail("cannot write", EFBIG);
    return WriteAndExchange(in_bytes) && SyncDirectory();
}

bool OdbcIniFile::WriteAndExchange(std::string_view in_bytes) {
    PrivateHandle file;
    std::string name;
    if (!CreateTemporary(file, name)) return false;
    const Remover remover{m_directory, name};
    return WriteTemporary(file.Get(), in_bytes) && CopyAttributes(file.Get()) && Finish(file) &&
           PutInPlace(name);
}

bool OdbcIniFile::IsOutdated() {
    struct stat now {};
    const bool isThere = SystemCalls::StatAt(m_directory.Get(), m_name.c_str(), now) == 0;
    if (m_isNew) return isThere;
    // The attributes that a new file keeps can have changed too.
    return !isThere || !IsSameVersion(m_stat, now) || !IsSameTime(m_stat.st_ctim, now.st_ctim) ||
           !HasSameRights(m_stat, now);
}

/// The name cannot be guessed, and FindLeft recognises it.
bool OdbcIniFile::CreateTemporary(PrivateHandle& out_handle, std::string& out_name) {
    for (int attempts = 0; attempts < 16; ++attempts) {
        std::uint64_t random = 0;
        if (!SystemCalls::GetRandom(&random, sizeof random)) break;
        out_name = TemporaryName(m_name, random);
        out_handle = PrivateHandle(SystemCalls::OpenAt(
            m_directory.Get(), out_name.c_str(),
            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, m_isNew ? m_newFileMode : 0600));
        if (out_handle.IsOpen() && LockTemporary(out_name)) return true;
        // Gone or locked: another request took it for a leftover before it was locked.
        if (errno != EEXIST && errno != EINTR && errno != ENOENT && errno != EWOULDBLOCK) break;
    }
    return Fail("cannot create a temporary file beside it", errno);
}

/// The lock shows other requests that the file is in use. Once the file is in place, the lock keeps
/// them from changing it until it is safe on disk. The handle is a second one, for reading, because
/// the one for writing is closed earlier.
bool OdbcIniFile::LockTemporary(const std::string& in_name) {
    m_temporary = PrivateHandle(SystemCalls::OpenAt(m_directory.Get(), in_name.c_str(),
                                                    O_RDONLY | O_NOFOLLOW | OPEN_FLAGS, 0));
    if (m_temporary.IsOpen() &&
        LockNow(m_temporary, m_directory.Get(), in_name.c_str(), O_NOFOLLOW)) {
        return true;
    }
    const int error = errno;
    SystemCalls::UnlinkAt(m_directory.Get(), in_name.c_str());
    errno = error;
    return false;
}

bool OdbcIniFile::WriteTemporary(int in_handle, std::string_view in_bytes) {
    for (std::string_view rest = in_bytes; !rest.empty();) {
        const ssize_t count = SystemCalls::Write(in_handle, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return Fail("cannot write", count < 0 ? errno : EIO);
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    if (SystemCalls::StatHandle(in_handle, m_written) != 0) return Fail("cannot write", errno);
    return static_cast<std::size_t>(m_written.st_size) == in_bytes.size() ||
           Fail("cannot write", EIO);
}

/// Copies the attributes of the old file to the temporary one. Fails if the owner or the rights
/// cannot be kept: more or fewer users could then read the file.
bool OdbcIniFile::CopyAttributes(int in_handle) {
    if (m_isNew) return true;
    if ((m_stat.st_uid != m_written.st_uid || m_stat.st_gid != m_written.st_gid) &&
        SystemCalls::ChangeOwner(in_handle, m_stat.st_uid, m_stat.st_gid) != 0) {
        return Fail("cannot keep the owner", errno);
    }
    using namespace FileAttributes;
    const CopyResult list = CopyAccessList(m_file.Get(), in_handle);
    if (list.m_failed != nullptr) return Fail(list.m_failed, list.m_error);
    // Without set-user-id and the like, which a write removes as well.
    mode_t mode = m_stat.st_mode & 0777;
    if (m_isEmpty) mode &= m_newFileMode;
    // Setting an access list changes the mode.
    if ((list.m_isSet || mode != (m_written.st_mode & 07777)) &&
        SystemCalls::ChangeMode(in_handle, mode) != 0) {
        return Fail("cannot keep the mode", errno);
    }
    const CopyResult others = CopyExtendedAttributes(m_file.Get(), in_handle);
    return others.m_failed == nullptr || Fail(others.m_failed, others.m_error);
}

bool OdbcIniFile::Finish(PrivateHandle& io_handle) {
    if (SystemCalls::Sync(io_handle.Get()) != 0) return Fail("cannot write", errno);
    // Some file systems report a full disk only here.
    return io_handle.CloseNow() == 0 || errno == EINTR || Fail("cannot write", errno);
}

/// @param io_name  in: the temporary file; out: the file to remove, empty for none
bool OdbcIniFile::PutInPlace(std::string& io_name) {
    // The sync took time. What another program wrote meanwhile must not be lost.
    if (IsOutdated()) return FailAsOutdated();
    if (m_isNew) return PutNew(io_name);
    if (Rename(io_name, RENAME_EXCHANGE)) return IsAsRead(io_name) || PutBack(io_name);
    if (!IsUnsupported(errno)) return FailToReplace();
    // Without an exchange the old file loses its name, so it is checked before.
    if (!IsAsRead(m_name) || IsOutdated()) return FailAsOutdated();
    return Rename(io_name, 0) || FailToReplace();
}

bool OdbcIniFile::Rename(const std::string& in_name, unsigned in_flags) {
    return SystemCalls::RenameAt(m_directory.Get(), in_name.c_str(), m_name.c_str(), in_flags) == 0;
}

bool OdbcIniFile::PutNew(const std::string& in_name) {
    if (Rename(in_name, RENAME_NOREPLACE)) return true;
    if (IsUnsupported(errno) &&
        SystemCalls::LinkAt(m_directory.Get(), in_name.c_str(), m_name.c_str()) == 0) {
        return true;
    }
    return errno == EEXIST ? FailAsOutdated() : FailToReplace();
}

/// ENOENT means that another program removed the file, or another host the temporary one.
bool OdbcIniFile::FailToReplace() {
    if (errno == ENOENT) return FailAsOutdated();
    return Fail(errno == EBUSY ? MOUNTED : "cannot replace", errno);
}

/// True when the name leads to the file and to the bytes that were read. Compares the bytes where
/// inode, size and time are not enough: within one tick of the file system's clock, a second on
/// some, the same number of bytes can be written again. A network file system caches all three for
/// seconds, except for a program that opens the file anew.
bool OdbcIniFile::IsAsRead(const std::string& in_name) {
    const bool isTold = m_writers == Writers::NONE;
    // A program that has opened the file since then truncates it sooner or later.
    if (isTold && SystemCalls::FindWritersAgain(m_file.Get()) == Writers::SOME) return false;
    const PrivateHandle anew(isTold ? -1
                                    : SystemCalls::OpenAt(m_directory.Get(), in_name.c_str(),
                                                          O_RDONLY | O_NOFOLLOW | OPEN_FLAGS, 0));
    struct stat now {};
    if ((isTold ? SystemCalls::StatAt(m_directory.Get(), in_name.c_str(), now)
                : SystemCalls::StatHandle(anew.Get(), now)) != 0) {
        return false;
    }
    // The rights can have changed since the last check, right before the exchange.
    const bool isSame = IsSameVersion(m_stat, now) && HasSameRights(m_stat, now);
    if (m_isTimeTelling || !isSame) return isSame;
    const PrivateHandle& file = isTold ? m_file : anew;
    char buffer[16384];
    // Up to the end: less can have been read than the file's size says.
    for (std::size_t size = 0;;) {
        const ssize_t count =
            SystemCalls::Read(file.Get(), buffer, sizeof buffer, static_cast<off_t>(size));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0 && size == m_bytes.size();
        const std::string_view part(buffer, static_cast<std::size_t>(count));
        if (std::string_view(m_bytes).substr(size, part.size()) != part) return false;
        size += part.size();
    }
}

/// Undoes the exchange: a program without the lock has written or replaced the old file since it
/// was read.
bool OdbcIniFile::PutBack(std::string& io_name) {
    struct stat now {};
    const bool isOurs = SystemCalls::StatAt(m_directory.Get(), m_name.c_str(), now) == 0 &&
                        IsSameVersion(m_written, now);
    // A program has already rewritten the new file, and its version is the newest.
    if (!isOurs) return true;
    if (Rename(io_name, RENAME_EXCHANGE)) {
        // Touched so that it does not pass for a file that we finished: its writer may not be done.
        SystemCalls::Touch(m_file.Get());
        return FailAsOutdated();
    }
    Fail("cannot put the file back", errno);
    io_name.clear();
    return false;
}

/// Without it a power cut can bring the old file back, for 5 s on ext4 and for 30 s and more on XFS
/// and btrfs.
bool OdbcIniFile::SyncDirectory() {
    int result = SystemCalls::Sync(m_directory.Get());
    while (result != 0 && errno == EINTR) result = SystemCalls::Sync(m_directory.Get());
    // Some file systems cannot sync a directory.
    return result == 0 || IsUnsupported(errno) || Fail("cannot sync the directory", errno);
}

}  // namespace Veltrane::ODBC
