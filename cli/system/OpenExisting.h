/// Opens files and consoles.
#ifndef CLI_OPENEXISTING_H
#define CLI_OPENEXISTING_H

#include <string>

#include "PlatformAbstraction/base/WindowsHandle.h"

namespace Veltrane::Cli {

using Orska::Support::WindowsHandle;

/// What is there already; not open, with GetLastError, when it cannot be opened.
inline WindowsHandle OpenExisting(const std::wstring& in_path, DWORD in_access = GENERIC_READ) {
    // Who serves a pipe of that name learns who the user is, and cannot act as that user.
    return WindowsHandle(CreateFileW(in_path.c_str(), in_access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     nullptr, OPEN_EXISTING,
                                     SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
}

}  // namespace Veltrane::Cli

#endif
