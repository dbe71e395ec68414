#include "tools/WindowsApi.h"

#include "Setup/ModulePin.h"

namespace Veltrane::ODBC {

namespace {

bool Pin() noexcept {
    static const char s_inThisModule = 0;
    HMODULE module = nullptr;
    return ::GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
               reinterpret_cast<const wchar_t*>(&s_inThisModule), &module) != 0;
}

}  // namespace

// The run-time linked into the library takes a thread-local slot at each load and does not give it
// back: after about a thousand loads the process has none left and aborts. ICU leaves the tables of
// the converters that it opened. Loaded for good, the library costs both once. Besides, at the end
// of a thread that has used it, the run-time would free the library from within itself.
void PinModule() noexcept {
    // Process-wide: set at the first entry, never changed.
    [[maybe_unused]] static const bool s_isPinned = Pin();
}

}  // namespace Veltrane::ODBC
