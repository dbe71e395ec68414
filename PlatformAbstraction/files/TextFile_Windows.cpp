#include <algorithm>

#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "PlatformAbstraction/files/TextFile.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

namespace {

/// The most bytes of one read or write.
constexpr std::size_t MAX_TRANSFER = 0x7ffff000;

HANDLE ToHandle(std::intptr_t in_handle) { return reinterpret_cast<HANDLE>(in_handle); }

DWORD LimitTransfer(std::size_t in_count) {
    return static_cast<DWORD>(std::min(in_count, MAX_TRANSFER));
}

/// True for a file or the null device. Reading a console or a pipe can block for ever.
bool IsFile(HANDLE in_handle, const std::filesystem::path& in_path) {
    const std::wstring name = in_path.filename().native();
    return GetFileType(in_handle) == FILE_TYPE_DISK || lstrcmpiW(name.c_str(), L"NUL") == 0;
}

/// Closes the handle, then sets the last error.
void CloseWithError(HANDLE in_handle, DWORD in_error) {
    CloseHandle(in_handle);
    SetLastError(in_error);
}

}  // namespace

bool FileHandle::Open(const orska_wstring& in_fileName, const FileOpenArguments& in_arguments) {
    const std::filesystem::path path = FileSystemUtils::GetNativePath(in_fileName);
    const HANDLE handle = CreateFileW(path.c_str(), in_arguments.m_access, in_arguments.m_shareMode,
                                      nullptr, in_arguments.m_creationDisposition,
                                      SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    if (!IsFile(handle, path)) {
        CloseWithError(handle, ERROR_NOT_SUPPORTED);
        return false;
    }
    m_handle = reinterpret_cast<std::intptr_t>(handle);
    return true;
}

void FileHandle::Close() noexcept {
    if (m_handle != INVALID) {
        // The system releases a lock with the handle, but only some time later.
        Unlock(m_lockedBytes);
        CloseHandle(ToHandle(m_handle));
        m_handle = INVALID;
    }
}

std::int64_t FileHandle::Read(void* out_buffer, std::size_t in_count) {
    DWORD count = 0;
    return ReadFile(ToHandle(m_handle), out_buffer, LimitTransfer(in_count), &count, nullptr)
               ? std::int64_t{count}
               : -1;
}

std::int64_t FileHandle::WriteSome(const void* in_buffer, std::size_t in_count) {
    DWORD count = 0;
    return WriteFile(ToHandle(m_handle), in_buffer, LimitTransfer(in_count), &count, nullptr)
               ? std::int64_t{count}
               : -1;
}

std::int64_t FileHandle::Seek(std::int64_t in_offset, Origin in_origin) {
    const DWORD method = in_origin == Origin::START ? FILE_BEGIN
                         : in_origin == Origin::END ? FILE_END
                                                    : FILE_CURRENT;
    LARGE_INTEGER distance;
    distance.QuadPart = in_offset;
    LARGE_INTEGER position;
    return SetFilePointerEx(ToHandle(m_handle), distance, &position, method) ? position.QuadPart
                                                                             : -1;
}

bool FileHandle::SetEnd() { return SetEndOfFile(ToHandle(m_handle)) != FALSE; }

bool FileHandle::Flush() { return FlushFileBuffers(ToHandle(m_handle)) != FALSE; }

std::uint64_t FileHandle::GetSize() const {
    LARGE_INTEGER size;
    return GetFileSizeEx(ToHandle(m_handle), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

void FileHandle::Lock(std::uint32_t in_byteCount) {
    // A second lock on the same bytes would wait for the first for ever, even through the
    // same handle.
    Unlock(m_lockedBytes);
    OVERLAPPED start = {};
    if (LockFileEx(ToHandle(m_handle), LOCKFILE_EXCLUSIVE_LOCK, 0, in_byteCount, 0, &start)) {
        m_lockedBytes = in_byteCount;
    }
}

void FileHandle::Unlock(std::uint32_t /*in_byteCount*/) {
    // Names the range that was locked, not the current size: only that range can be released.
    if (m_lockedBytes != 0) {
        OVERLAPPED start = {};
        UnlockFileEx(ToHandle(m_handle), 0, m_lockedBytes, 0, &start);
        m_lockedBytes = 0;
    }
}

}  // namespace Orska::Support
