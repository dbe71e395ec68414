#include "tools/WindowsApi.h"

#include "Setup/InstallerCaller.h"

namespace Veltrane::ODBC {

namespace {

bool PinModule() noexcept {
    static const char s_inThisModule = 0;
    HMODULE module = nullptr;
    return ::GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
               reinterpret_cast<const wchar_t*>(&s_inThisModule), &module) != 0;
}

}  // namespace

// There is one installer, the system's. It frees the library after every request; the first call
// keeps the library in the process. The run-time linked into it takes a thread-local slot at each
// load and does not give it back: after about a thousand loads the process has none left and
// aborts. ICU leaves the tables of the converters that it opened. Loaded for good, the library
// costs both once. Besides, at the end of a thread that has used it, the run-time would free the
// library from within itself.
InstallerCaller::InstallerCaller(const void* /*in_returnAddress*/) noexcept {
    // Process-wide: set at the first entry, never changed.
    [[maybe_unused]] static const bool s_isPinned = PinModule();
}

InstallerCaller::~InstallerCaller() = default;

bool InstallerCaller::HasPlatformWideChars() const noexcept { return false; }

}  // namespace Veltrane::ODBC
