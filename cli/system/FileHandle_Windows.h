/// Owns an open file or console.
#ifndef CLI_FILEHANDLE_WINDOWS_H
#define CLI_FILEHANDLE_WINDOWS_H

#include <windows.h>

#include <string>

namespace Veltrane::Cli {

class FileHandle {
public:
    explicit FileHandle(const std::wstring& in_path, DWORD in_access = GENERIC_READ)
        : m_handle(CreateFileW(in_path.c_str(), in_access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                               nullptr, OPEN_EXISTING, 0, nullptr)) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() {
        if (IsOpen()) CloseHandle(m_handle);
    }
    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

}  // namespace Veltrane::Cli

#endif
