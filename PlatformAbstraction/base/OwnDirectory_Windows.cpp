#include "PlatformAbstraction/base/OwnDirectory.h"

#include <string>

#include "tools/WindowsApi.h"

namespace Orska::Support {

NativePath GetOwnDirectory() {
    static const char s_anchor = 0;
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<const wchar_t*>(&s_anchor), &module)) {
        return {};
    }
    // The loader keeps the absolute path. Old systems truncate it without an error, so a full
    // buffer is too small.
    constexpr std::size_t LONGEST_PATH = 32'768;
    for (std::size_t size = MAX_PATH; size <= LONGEST_PATH; size *= 2) {
        std::wstring file(size, L'\0');
        const DWORD length = GetModuleFileNameW(module, file.data(), static_cast<DWORD>(size));
        if (length < size) {
            return file.substr(0, file.substr(0, length).rfind(L'\\') + 1);
        }
    }
    return {};
}

}  // namespace Orska::Support
