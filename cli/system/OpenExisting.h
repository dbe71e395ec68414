/// Opens files and consoles.
#ifndef CLI_OPENEXISTING_H
#define CLI_OPENEXISTING_H

#include <filesystem>

#include "PlatformAbstraction/base/WindowsHandle.h"

namespace Veltrane::Cli {

using Orska::Support::WindowsHandle;

/// Opens an existing file; on failure the handle is not open, and GetLastError has the reason.
inline WindowsHandle OpenExisting(const std::filesystem::path& in_path,
                                  DWORD in_access = GENERIC_READ) {
    // If the path is a pipe, its server can identify the user but not impersonate him.
    return WindowsHandle(CreateFileW(in_path.c_str(), in_access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     nullptr, OPEN_EXISTING,
                                     SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
}

}  // namespace Veltrane::Cli

#endif
