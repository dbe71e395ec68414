/// Owners of Windows handles: of files, consoles and other kernel objects, and of registry keys.
#ifndef PLATFORMABSTRACTION_BASE_WINDOWSHANDLE_H
#define PLATFORMABSTRACTION_BASE_WINDOWSHANDLE_H

#include "PlatformAbstraction/base/OwnedHandle.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

struct WindowsHandleKind {
    using Handle = HANDLE;
    static HANDLE NoHandle() noexcept { return INVALID_HANDLE_VALUE; }
    /// On failure some calls return null, others INVALID_HANDLE_VALUE.
    static bool IsHandle(HANDLE in_handle) noexcept {
        return in_handle != nullptr && in_handle != INVALID_HANDLE_VALUE;
    }
    static void Close(HANDLE in_handle) noexcept { CloseHandle(in_handle); }
};

using WindowsHandle = OwnedHandle<WindowsHandleKind>;

struct RegistryHandleKind {
    using Handle = HKEY;
    static HKEY NoHandle() noexcept { return nullptr; }
    static bool IsHandle(HKEY in_key) noexcept { return in_key != nullptr; }
    static void Close(HKEY in_key) noexcept { RegCloseKey(in_key); }
};

using RegistryHandle = OwnedHandle<RegistryHandleKind>;

/// @param out_error  ERROR_SUCCESS, or why the handle is not open
inline RegistryHandle OpenRegistryKey(HKEY in_parent, const wchar_t* in_path, REGSAM in_rights,
                                      LONG& out_error) noexcept {
    HKEY key = nullptr;
    out_error = RegOpenKeyExW(in_parent, in_path, 0, in_rights, &key);
    return RegistryHandle(out_error == ERROR_SUCCESS ? key : nullptr);
}

}  // namespace Orska::Support

#endif
