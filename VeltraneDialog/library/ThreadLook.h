/// How windows of this thread look while the dialog is open, whatever the host asks for itself.
#ifndef VELTRANEDIALOG_LIBRARY_THREADLOOK_H
#define VELTRANEDIALOG_LIBRARY_THREADLOOK_H

#include <windows.h>

namespace Veltrane::ODBC {

/// Sharp at the scale of each monitor, as far as the system knows how: from Windows 10 1607 on by
/// monitor, with the dialog scaled anew when it is moved; before that at the scale of the host.
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

/// The system's current controls, which the manifest of this library asks for.
class CurrentControls {
public:
    /// @param in_library  the one that has the manifest
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
