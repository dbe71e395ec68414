#include "VeltraneDialog/library/ThreadLook.h"

#include <cstdint>
#include <initializer_list>

#include "VeltraneDialog/library/Resource.h"

namespace Veltrane::ODBC {

SharpAtEachScale::SharpAtEachScale() {
    const HMODULE user = GetModuleHandleW(L"user32.dll");
    if (user == nullptr) return;
    const FARPROC function = GetProcAddress(user, "SetThreadDpiAwarenessContext");
    m_set = reinterpret_cast<SetContext>(reinterpret_cast<void*>(function));
    if (m_set == nullptr) return;
    // Per monitor, version 2 (Windows 10 1703), then version 1, then the system's scale.
    for (const std::intptr_t context : {-4, -3, -2}) {
        m_before = m_set(reinterpret_cast<void*>(context));
        if (m_before != nullptr) return;
    }
}

SharpAtEachScale::~SharpAtEachScale() {
    if (m_before != nullptr) m_set(m_before);
}

CurrentControls::CurrentControls(HMODULE in_library) : m_context(INVALID_HANDLE_VALUE) {
    ACTCTXW wish{};
    wish.cbSize = sizeof wish;
    wish.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    wish.lpResourceName = MAKEINTRESOURCEW(MANIFEST_OF_LIBRARY);
    wish.hModule = in_library;
    m_context = CreateActCtxW(&wish);
    // Without it the dialog works too, with the look of the host.
    m_isActive = m_context != INVALID_HANDLE_VALUE && ActivateActCtx(m_context, &m_cookie) != FALSE;
}

CurrentControls::~CurrentControls() {
    if (m_isActive) DeactivateActCtx(0, m_cookie);
    if (m_context != INVALID_HANDLE_VALUE) ReleaseActCtx(m_context);
}

}  // namespace Veltrane::ODBC
