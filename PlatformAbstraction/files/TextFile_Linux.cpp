#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "PlatformAbstraction/files/TextFile.h"
#include "tools/HighDescriptor.h"
#include "tools/NoCancellation.h"

namespace Orska::Support {

namespace {

/// The most bytes of one read or write.
constexpr std::size_t MAX_TRANSFER = 0x7ffff000;

int ToDescriptor(std::intptr_t in_handle) { return static_cast<int>(in_handle); }

/// Repeats the call while signals interrupt it.
template <typename Call>
auto Retry(const Call& in_call) {
    auto result = in_call();
    while (result == -1 && errno == EINTR) {
        result = in_call();
    }
    return result;
}

int ToFlags(const FileOpenArguments& in_arguments) {
    constexpr std::uint32_t READ = 0x80000000;
    constexpr std::uint32_t WRITE = 0x40000000;
    const bool isRead = (in_arguments.m_access & READ) != 0;
    const bool isWrite = (in_arguments.m_access & WRITE) != 0;
    const int access = isRead && isWrite ? O_RDWR : isWrite ? O_WRONLY : O_RDONLY;
    const int creation = in_arguments.m_creationDisposition == 2   ? O_CREAT | O_TRUNC
                         : in_arguments.m_creationDisposition == 4 ? O_CREAT
                                                                   : 0;
    // Without O_NONBLOCK the open of a FIFO waits for its other end; it has no effect on a file.
    return access | creation | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
}

/// Returns 0 for what can be used as a file, otherwise the error. Reading a terminal or a FIFO can
/// block for ever, and some devices never end.
int RefuseOtherThanFile(int in_descriptor) {
    struct stat status;
    if (fstat(in_descriptor, &status) != 0) return errno;
    if (S_ISREG(status.st_mode)) return 0;
    if (S_ISDIR(status.st_mode)) return EISDIR;
    const bool isNullDevice = S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
    return isNullDevice ? 0 : ESPIPE;
}

/// Closes the descriptor and keeps errno.
void CloseKeepingError(int in_descriptor) {
    const int error = errno;
    close(in_descriptor);
    errno = error;
}

/// Locks and unlocks through the open file description, so that two objects of one process exclude
/// each other too and closing one does not release the other's lock.
int SetLock(std::intptr_t in_handle, short in_type, off_t in_length) {
    struct flock range = {};
    range.l_type = in_type;
    range.l_whence = SEEK_SET;
    range.l_len = in_length;
    return Retry([&] { return fcntl(ToDescriptor(in_handle), F_OFD_SETLKW, &range); });
}

}  // namespace

bool FileHandle::Open(const orska_wstring& in_fileName, const FileOpenArguments& in_arguments) {
    const std::filesystem::path path = FileSystemUtils::GetNativePath(in_fileName);
    const int descriptor =
        MoveAboveStandard(Retry([&] { return open(path.c_str(), ToFlags(in_arguments), 0666); }));
    if (descriptor < 0) {
        return false;
    }
    errno = RefuseOtherThanFile(descriptor);
    if (errno != 0) {
        CloseKeepingError(descriptor);
        return false;
    }
    m_handle = descriptor;
    return true;
}

void FileHandle::Close() noexcept {
    const NoCancellation noCancellation;  // in a destructor a cancellation ends the process
    for (std::intptr_t* handle : {&m_lockHandle, &m_handle}) {
        if (*handle != INVALID) {
            close(ToDescriptor(*handle));
            *handle = INVALID;
        }
    }
}

std::int64_t FileHandle::Read(void* out_buffer, std::size_t in_count) {
    return Retry(
        [&] { return read(ToDescriptor(m_handle), out_buffer, std::min(in_count, MAX_TRANSFER)); });
}

std::int64_t FileHandle::WriteSome(const void* in_buffer, std::size_t in_count) {
    return Retry(
        [&] { return write(ToDescriptor(m_handle), in_buffer, std::min(in_count, MAX_TRANSFER)); });
}

std::int64_t FileHandle::Seek(std::int64_t in_offset, Origin in_origin) {
    const int whence = in_origin == Origin::START ? SEEK_SET
                       : in_origin == Origin::END ? SEEK_END
                                                  : SEEK_CUR;
    return lseek(ToDescriptor(m_handle), in_offset, whence);
}

bool FileHandle::SetEnd() {
    const off_t position = lseek(ToDescriptor(m_handle), 0, SEEK_CUR);
    return position >= 0 && Retry([&] { return ftruncate(ToDescriptor(m_handle), position); }) == 0;
}

bool FileHandle::Flush() {
    return Retry([&] { return fsync(ToDescriptor(m_handle)); }) == 0;
}

std::uint64_t FileHandle::GetSize() const {
    struct stat status;
    return fstat(ToDescriptor(m_handle), &status) == 0 ? static_cast<std::uint64_t>(status.st_size)
                                                       : 0;
}

void FileHandle::Lock(std::uint32_t in_byteCount) {
    if (SetLock(m_handle, F_WRLCK, in_byteCount) == 0 || errno != EBADF) {
        return;
    }
    // An exclusive lock needs a descriptor open for writing. A file opened for reading gets a
    // second one. If it must not be written at all, it gets a shared lock, which still keeps
    // writers out.
    const std::string same = "/proc/self/fd/" + std::to_string(m_handle);
    const int descriptor = m_lockHandle != INVALID ? ToDescriptor(m_lockHandle)
                                                   : open(same.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0) {
        SetLock(m_handle, F_RDLCK, in_byteCount);
        return;
    }
    m_lockHandle = descriptor;
    SetLock(m_lockHandle, F_WRLCK, in_byteCount);
}

void FileHandle::Unlock(std::uint32_t /*in_byteCount*/) {
    // Unlocks every byte: the file can have shrunk since Lock, and bytes left locked would keep
    // others waiting until the file is closed.
    SetLock(m_lockHandle != INVALID ? m_lockHandle : m_handle, F_UNLCK, 0);
}

}  // namespace Orska::Support
