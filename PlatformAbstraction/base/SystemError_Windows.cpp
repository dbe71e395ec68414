#include <memory>

#include "PlatformAbstraction/base/SystemError.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

namespace {

bool FormatMessageFrom(DWORD in_source, HMODULE in_module, std::uint32_t in_code,
                       std::string& out_text) {
    // Not 0x1900 for a text from a module: it also asks the system for codes that the module lacks,
    // and reads inserts that are not passed.
    constexpr DWORD USER_DEFAULT_LANGUAGE = 1024;
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | in_source, in_module,
        in_code, USER_DEFAULT_LANGUAGE, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    if (length == 0) {
        return false;
    }
    const std::unique_ptr<wchar_t, decltype(&LocalFree)> owner(text, &LocalFree);
    const int units = static_cast<int>(length);
    out_text.resize(3 * std::size_t{length});
    out_text.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text, units, out_text.data(),
                            static_cast<int>(out_text.size()), nullptr, nullptr)));
    return true;
}

}  // namespace

std::uint32_t GetLastErrorCode() noexcept { return GetLastError(); }

bool FormatSystemMessage(std::uint32_t in_code, std::string& out_text) {
    return FormatMessageFrom(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, in_code, out_text);
}

bool FormatNtStatusMessage(std::uint32_t in_code, std::string& out_text) {
    return FormatMessageFrom(FORMAT_MESSAGE_FROM_HMODULE, GetModuleHandleW(L"NTDLL.DLL"), in_code,
                             out_text);
}

}  // namespace Orska::Support
