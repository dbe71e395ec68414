#include "VeltraneDialog/WideText_Windows.h"

#include <windows.h>

#include <iterator>
#include <stdexcept>

#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

std::wstring ToWide(std::string_view in_bytes) {
    std::u16string text;
    const WipeAtEnd wipe(text);
    if (!DecodeUtf8(in_bytes, text)) return {};
    return std::wstring(AsWide(text.data()), text.size());
}

std::string ToUtf8(std::wstring_view in_text) {
    return EncodeUtf8(
        std::u16string_view(reinterpret_cast<const char16_t*>(in_text.data()), in_text.size()));
}

std::string DescribeSystemError(unsigned long in_error) {
    wchar_t text[512] = L"";
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, in_error, 0, text, std::size(text), nullptr);
    constexpr std::wstring_view ENDS(L"\r\n .");
    while (length > 0 && ENDS.find(text[length - 1]) != std::wstring_view::npos) --length;
    const std::string known = ToUtf8({text, length});
    return known.empty() ? "error " + std::to_string(in_error) : known;
}

std::wstring OwnModulePath() {
    HMODULE module = nullptr;
    const BOOL isFound = GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const wchar_t*>(&OwnModulePath), &module);
    // Long paths are cut to the buffer without an error on old systems: a full buffer is too small.
    constexpr DWORD MAX_LENGTH = 1 << 15;
    std::wstring path(isFound ? MAX_PATH : 0, L'\0');
    while (!path.empty() && path.size() <= MAX_LENGTH) {
        const DWORD length =
            GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) break;
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
    throw std::runtime_error(
        "The path of this module cannot be found: " + DescribeSystemError(GetLastError()) + ".");
}

}  // namespace Veltrane::ODBC
