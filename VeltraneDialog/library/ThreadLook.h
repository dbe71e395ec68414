/// The look of this thread's windows while the dialog is open, whatever the host has set.
#ifndef VELTRANEDIALOG_LIBRARY_THREADLOOK_H
#define VELTRANEDIALOG_LIBRARY_THREADLOOK_H

#include <windows.h>

namespace Veltrane::ODBC {

/// Sharp text at the scale of each monitor, if the system supports it. From Windows 10 1607 on the
/// dialog is scaled again when it moves to another monitor; before that it has the host's scale.
class SharpAtEachScale {
public:
    SharpAtEachScale();
    SharpAtEachScale(const SharpAtEachScale&) = delete;
    SharpAtEachScale& operator=(const SharpAtEachScale&) = delete;
    ~SharpAtEachScale();

private:
    using SetContext = void* (*)(void* in_context);
    SetContext m_set = nullptr;
    void* m_before = nullptr;
};

/// The system's current controls, which the manifest of this library requests.
class CurrentControls {
public:
    /// @param in_library  has the manifest
    explicit CurrentControls(HMODULE in_library);
    CurrentControls(const CurrentControls&) = delete;
    CurrentControls& operator=(const CurrentControls&) = delete;
    ~CurrentControls();

private:
    HANDLE m_context;
    ULONG_PTR m_cookie = 0;
    bool m_isActive = false;
};

}  // namespace Veltrane::ODBC

#endif
