#include "tools/WindowsApi.h"

#include "Setup/VeltraneDSNResourceHelper.h"

namespace Veltrane::ODBC {

// The string table is a resource of the module, made from VeltraneDSNStrings.inc.
void* VeltraneDSNResourceHelper::GetModuleInstance() noexcept {
    static const char s_inThisModule = 0;
    HMODULE module = nullptr;
    const DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    const bool isFound =
        GetModuleHandleExW(flags, reinterpret_cast<const wchar_t*>(&s_inThisModule), &module) != 0;
    return isFound ? module : nullptr;
}

int VeltraneDSNResourceHelper::LoadStringNarrow(void* in_module, unsigned in_resourceStringId,
                                                char* out_buffer, int in_size) noexcept {
    return LoadStringA(static_cast<HINSTANCE>(in_module), in_resourceStringId, out_buffer, in_size);
}

}  // namespace Veltrane::ODBC
