/// Owns a handle of a file, console or other object of the kernel (Windows).
#ifndef PLATFORMABSTRACTION_BASE_WINDOWSHANDLE_H
#define PLATFORMABSTRACTION_BASE_WINDOWSHANDLE_H

#include "PlatformAbstraction/base/OwnedHandle.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

struct WindowsHandleKind {
    using Handle = HANDLE;
    static HANDLE NoHandle() noexcept { return INVALID_HANDLE_VALUE; }
    /// Some calls answer null, others INVALID_HANDLE_VALUE, where they fail.
    static bool IsHandle(HANDLE in_handle) noexcept {
        return in_handle != nullptr && in_handle != INVALID_HANDLE_VALUE;
    }
    static void Close(HANDLE in_handle) noexcept { CloseHandle(in_handle); }
};

using WindowsHandle = OwnedHandle<WindowsHandleKind>;

}  // namespace Orska::Support

#endif
