/// Opens files and consoles.
#ifndef CLI_FILEHANDLE_WINDOWS_H
#define CLI_FILEHANDLE_WINDOWS_H

#include <string>

#include "PlatformAbstraction/base/WindowsHandle.h"

namespace Veltrane::Cli {

using Orska::Support::WindowsHandle;

/// What is there already; not open, with GetLastError, when it cannot be opened.
inline WindowsHandle OpenExisting(const std::wstring& in_path, DWORD in_access = GENERIC_READ) {
    return WindowsHandle(CreateFileW(in_path.c_str(), in_access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     nullptr, OPEN_EXISTING, 0, nullptr));
}

}  // namespace Veltrane::Cli

#endif
