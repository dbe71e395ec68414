#include "Setup/OdbcIniFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <system_error>

namespace Veltrane::ODBC {

namespace {

using SystemCalls::FileHandle;

constexpr int OPEN_FLAGS = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr char TEMPORARY_MARK[] = ".veltrane-";
constexpr std::size_t RANDOM_DIGITS = 16;
/// Leaves room for the mark and the digits in a name of 255 bytes.
constexpr std::size_t MAX_NAME_PART = 200;
/// How often a file is opened again that is replaced while it is read.
constexpr int MAX_READS = 8;
constexpr char ACCESS_LIST[] = "system.posix_acl_access";

bool IsSameFile(const struct stat& in_left, const struct stat& in_right) {
    return in_left.st_dev == in_right.st_dev && in_left.st_ino == in_right.st_ino;
}

bool IsSameTime(const timespec& in_left, const timespec& in_right) {
    return in_left.tv_sec == in_right.tv_sec && in_left.tv_nsec == in_right.tv_nsec;
}

std::string TemporaryPrefix(const std::string& in_name) {
    return in_name.substr(0, MAX_NAME_PART) + TEMPORARY_MARK;
}

std::string HexDigits(std::uint64_t in_value) {
    std::string digits;
    for (std::size_t i = 0; i < RANDOM_DIGITS; ++i, in_value >>= 4) {
        digits += "0123456789abcdef"[in_value & 15];
    }
    return digits;
}

void Pause() {
    std::uint16_t random = 0;
    SystemCalls::GetRandom(&random, sizeof random);
    SystemCalls::SleepMicroseconds(200 + random % 2000);
}

bool IsTemporaryName(const std::string& in_name, const std::string& in_prefix) {
    return in_name.size() == in_prefix.size() + RANDOM_DIGITS && in_name.starts_with(in_prefix) &&
           in_name.find_first_not_of("0123456789abcdef", in_prefix.size()) == std::string::npos;
}

}  // namespace

std::string FileFailure::Describe() const {
    std::string path = m_path;
    // A path must not be able to end the line that it is shown in.
    for (char& byte : path) {
        if (static_cast<unsigned char>(byte) < ' ') byte = '?';
    }
    const std::string text = path.empty() ? m_operation : path + ": " + m_operation;
    return m_error == REFUSED ? text : text + ": " + std::generic_category().message(m_error);
}

bool OdbcIniFile::Fail(const char* in_operation, int in_error) {
    m_failure = {m_path, in_operation, in_error};
    return false;
}

/// An open file that is said not to exist is one that was replaced, on some network file systems.
bool OdbcIniFile::FailToRead() { return Fail("cannot read", errno == ENOENT ? ESTALE : errno); }

bool OdbcIniFile::Read(std::string& out_bytes, struct stat& out_stat) {
    for (int attempts = 1;; ++attempts) {
        m_failure = {};
        if (ReadOnce(out_bytes, out_stat)) return true;
        if (!IsStale() || attempts == MAX_READS) return false;
    }
}

bool OdbcIniFile::ReadOnce(std::string& out_bytes, struct stat& out_stat) {
    const FileHandle file(SystemCalls::Open(m_path.c_str(), O_RDONLY | OPEN_FLAGS, 0));
    if (!file.IsOpen()) return Fail("cannot open", errno);
    if (SystemCalls::StatHandle(file.Get(), out_stat) != 0) return FailToRead();
    return ReadAll(file.Get(), out_stat, out_bytes);
}

bool OdbcIniFile::ReadAll(int in_handle, const struct stat& in_stat, std::string& out_bytes) {
    if (!S_ISREG(in_stat.st_mode)) return Fail("not a regular file", FileFailure::REFUSED);
    if (in_stat.st_size > MAX_SIZE) return Fail("cannot read", EFBIG);
    // One byte more than expected, so that the end is usually seen without a second round.
    out_bytes.resize(static_cast<std::size_t>(in_stat.st_size) + 1);
    std::size_t size = 0;
    for (;;) {
        const ssize_t count = SystemCalls::Read(in_handle, out_bytes.data() + size,
                                                out_bytes.size() - size, static_cast<off_t>(size));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return FailToRead();
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
        if (static_cast<off_t>(size) > MAX_SIZE) return Fail("cannot read", EFBIG);
        if (size == out_bytes.size()) out_bytes.resize(size + 4096);
    }
    out_bytes.resize(size);
    return true;
}

bool OdbcIniFile::Lock(std::string& out_bytes, mode_t in_newFileMode) {
    const long long deadline = SystemCalls::GetMonotonicTime() + LOCK_TIMEOUT;
    for (;;) {
        Unlock();
        m_failure = {};
        if (LockOnce(out_bytes, in_newFileMode, deadline)) break;
        if (m_failure.IsSet() && !IsStale()) return false;
        if (SystemCalls::GetMonotonicTime() > deadline)
            return !m_failure.IsSet() && Fail("locked by another program", ETIMEDOUT);
        if (IsStale()) Pause();
    }
    m_bytes = out_bytes;
    return true;
}

/// @return false without a failure when another process created, removed or replaced the file
///         meanwhile
bool OdbcIniFile::LockOnce(std::string& out_bytes, mode_t in_newFileMode, long long in_deadline) {
    return OpenOrCreate(in_newFileMode) && m_file.IsOpen() && WaitForLock(in_deadline) &&
           FindPlace() && ReadAll(m_file.Get(), m_stat, out_bytes);
}

/// Opens the file for writing, so that a file that may not be written is refused although its
/// directory would allow to replace it. Leaves it closed when another try is due.
bool OdbcIniFile::OpenOrCreate(mode_t in_newFileMode) {
    m_file = FileHandle(SystemCalls::Open(m_path.c_str(), O_RDWR | OPEN_FLAGS, 0));
    if (m_file.IsOpen()) return true;
    if (errno != ENOENT) return Fail("cannot open for writing", errno);
    // A dangling link is followed by the system, which knows the links that must not be followed.
    struct stat link {};
    const bool isLink = SystemCalls::Stat(m_path.c_str(), link, false) == 0;
    const int flags = O_RDWR | O_CREAT | OPEN_FLAGS | (isLink ? 0 : O_EXCL);
    m_file = FileHandle(SystemCalls::Open(m_path.c_str(), flags, in_newFileMode));
    m_isCreated = m_file.IsOpen();
    return m_isCreated || errno == EEXIST || Fail("cannot create", errno);
}

/// Waits in small steps of random length: a blocking flock cannot be given a time limit without
/// signals, and without a limit any reader of the file could stop us for ever.
bool OdbcIniFile::WaitForLock(long long in_deadline) {
    while (SystemCalls::Lock(m_file.Get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return Fail("cannot lock", errno);
        if (SystemCalls::GetMonotonicTime() > in_deadline)
            return Fail("locked by another program", ETIMEDOUT);
        Pause();
    }
    return true;
}

/// Opens the directory in which the locked file really is.
/// @return false without a failure when the path now leads to another file
bool OdbcIniFile::FindPlace() {
    const std::string path = SystemCalls::RealPath(m_path.c_str());
    if (path.empty()) return errno != ENOENT && Fail("cannot resolve", errno);
    const std::size_t slash = path.rfind('/');
    m_name = path.substr(slash + 1);
    const std::string directory = slash == 0 ? "/" : path.substr(0, slash);
    m_directory =
        FileHandle(SystemCalls::Open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    if (!m_directory.IsOpen()) return errno != ENOENT && Fail("cannot open the directory", errno);
    if (SystemCalls::StatHandle(m_file.Get(), m_stat) != 0) return FailToRead();
    struct stat inPlace {};
    if (SystemCalls::StatAt(m_directory.Get(), m_name.c_str(), inPlace) != 0) {
        return errno != ENOENT && Fail("cannot read", errno);
    }
    return IsSameFile(m_stat, inPlace);
}

bool OdbcIniFile::IsOutdated() {
    struct stat inPlace {};
    if (SystemCalls::StatAt(m_directory.Get(), m_name.c_str(), inPlace) != 0) return true;
    return !IsSameFile(m_stat, inPlace) || m_stat.st_size != inPlace.st_size ||
           !IsSameTime(m_stat.st_mtim, inPlace.st_mtim);
}

/// True when the path still leads to the bytes that were read. Number, size and time alone do not
/// tell: within one tick of the file system's clock, which for some is a second, as many bytes can
/// be written again, and a network file system keeps all three for seconds, except for who opens
/// the file anew.
bool OdbcIniFile::IsAsRead() {
    const FileHandle file(SystemCalls::OpenAt(m_directory.Get(), m_name.c_str(),
                                              O_RDONLY | O_NOFOLLOW | OPEN_FLAGS, 0));
    char buffer[16384];
    for (std::size_t size = 0; file.IsOpen();) {
        const ssize_t count =
            SystemCalls::Read(file.Get(), buffer, sizeof buffer, static_cast<off_t>(size));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0 && size == m_bytes.size();
        const std::string_view part(buffer, static_cast<std::size_t>(count));
        if (std::string_view(m_bytes).substr(size, part.size()) != part) return false;
        size += part.size();
    }
    return false;
}

void OdbcIniFile::Unlock() noexcept {
    // Still locked here: nobody else can have written to a file that we made and that is empty.
    if (m_isCreated && m_directory.IsOpen() && !IsOutdated() && IsAsRead()) {
        SystemCalls::UnlinkAt(m_directory.Get(), m_name.c_str());
    }
    m_isCreated = false;
    m_bytes.clear();
    m_directory = FileHandle();
    m_file = FileHandle();
}

bool OdbcIniFile::Replace(std::string_view in_bytes) {
    if (IsOutdated()) return Fail("written to by another program", EAGAIN);
    RemoveStaleFiles();
    FileHandle file;
    std::string name;
    if (!CreateTemporary(file, name)) return false;
    bool isDone = WriteTemporary(file.Get(), in_bytes) && CopyAttributes(file.Get());
    if (isDone && SystemCalls::Sync(file.Get()) != 0) isDone = Fail("cannot write", errno);
    // Some file systems report a full disk only here.
    if (SystemCalls::Close(file.Release()) != 0 && errno != EINTR && isDone) {
        isDone = Fail("cannot write", errno);
    }
    if (isDone) isDone = Exchange(name);
    if (!isDone) SystemCalls::UnlinkAt(m_directory.Get(), name.c_str());
    return isDone;
}

/// Temporary files are made under the lock only, so any that is there now was left by a process
/// that died.
void OdbcIniFile::RemoveStaleFiles() {
    const std::string prefix = TemporaryPrefix(m_name);
    for (const std::string& name : SystemCalls::ListDirectory(m_directory.Get())) {
        if (IsTemporaryName(name, prefix)) {
            SystemCalls::UnlinkAt(m_directory.Get(), name.c_str());
        }
    }
}

bool OdbcIniFile::CreateTemporary(FileHandle& out_handle, std::string& out_name) {
    for (int attempts = 0; attempts < 16; ++attempts) {
        std::uint64_t random = 0;
        if (!SystemCalls::GetRandom(&random, sizeof random)) break;
        out_name = TemporaryPrefix(m_name) + HexDigits(random);
        out_handle = FileHandle(
            SystemCalls::OpenAt(m_directory.Get(), out_name.c_str(),
                                O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (out_handle.IsOpen()) return true;
        if (errno != EEXIST && errno != EINTR) break;
    }
    return Fail("cannot create a temporary file beside it", errno);
}

bool OdbcIniFile::WriteTemporary(int in_handle, std::string_view in_bytes) {
    for (std::string_view rest = in_bytes; !rest.empty();) {
        const ssize_t count = SystemCalls::Write(in_handle, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return Fail("cannot write", count < 0 ? errno : EIO);
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    struct stat written {};
    if (SystemCalls::StatHandle(in_handle, written) != 0) return Fail("cannot write", errno);
    return static_cast<std::size_t>(written.st_size) == in_bytes.size() ||
           Fail("cannot write", EIO);
}

/// Gives the temporary file the owner, the access list and the mode of the file that it replaces.
/// What cannot be kept is a reason to refuse: a wider or narrower file is not the same file.
bool OdbcIniFile::CopyAttributes(int in_handle) {
    struct stat old {};
    struct stat now {};
    if (SystemCalls::StatHandle(m_file.Get(), old) != 0 ||
        SystemCalls::StatHandle(in_handle, now) != 0) {
        return Fail("cannot read the owner", errno);
    }
    if ((old.st_uid != now.st_uid || old.st_gid != now.st_gid) &&
        SystemCalls::ChangeOwner(in_handle, old.st_uid, old.st_gid) != 0) {
        return Fail("cannot keep the owner", errno);
    }
    char list[4096];
    const ssize_t size = SystemCalls::GetAttribute(m_file.Get(), ACCESS_LIST, list, sizeof list);
    if (size < 0 && errno != ENODATA && errno != ENOTSUP) {
        return Fail("cannot read the access list", errno);
    }
    if (size > 0 && SystemCalls::SetAttribute(in_handle, ACCESS_LIST, list,
                                              static_cast<std::size_t>(size)) != 0) {
        return Fail("cannot keep the access list", errno);
    }
    // Without set-user-id and the like, which writing to a file takes away as well.
    if (SystemCalls::ChangeMode(in_handle, old.st_mode & 0777) != 0) {
        return Fail("cannot keep the mode", errno);
    }
    return true;
}

bool OdbcIniFile::Exchange(const std::string& in_name) {
    // Syncing took its time; what another program wrote meanwhile must not be lost.
    if (!IsAsRead() || IsOutdated()) return Fail("written to by another program", EAGAIN);
    if (SystemCalls::RenameAt(m_directory.Get(), in_name.c_str(), m_name.c_str()) != 0) {
        return Fail("cannot replace", errno);
    }
    // The directory is not synced: after a power cut the path may lead to the old file for a few
    // seconds' worth of changes, but always to a whole one, and the wait would double.
    m_isCreated = false;
    return true;
}

}  // namespace Veltrane::ODBC
