#include "tools/WindowsApi.h"

#include "Setup/InstallerCaller.h"

namespace Veltrane::ODBC {

namespace {

bool PinModule() noexcept {
    static const char s_inThisModule = 0;
    HMODULE module = nullptr;
    return GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
               reinterpret_cast<const wchar_t*>(&s_inThisModule), &module) != 0;
}

}  // namespace

// Windows has one installer. It frees the library after every request, so the first call pins the
// library. Otherwise each load would leak a thread-local slot of the run-time library (after about
// a thousand loads none is left and the process aborts) and ICU's converter tables. The run-time
// library would also free this library from within itself when a thread that has used it ends.
InstallerCaller::InstallerCaller(const void* /*in_returnAddress*/) noexcept {
    // Process-wide: set at the first entry, never changed.
    [[maybe_unused]] static const bool s_isPinned = PinModule();
}

InstallerCaller::~InstallerCaller() = default;

bool InstallerCaller::HasPlatformWideChars() const noexcept { return false; }

}  // namespace Veltrane::ODBC
