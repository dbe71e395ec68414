#include "PlatformAbstraction/base/Environment.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

std::optional<std::string> GetEnvironment(const char* in_name) {
    std::wstring name(std::char_traits<char>::length(in_name), L'\0');
    const int nameSize = static_cast<int>(name.size());
    name.resize(MultiByteToWideChar(CP_UTF8, 0, in_name, nameSize, name.data(), nameSize));
    std::wstring value(64, L'\0');
    for (;;) {
        SetLastError(ERROR_SUCCESS);
        const DWORD size = static_cast<DWORD>(value.size());
        const DWORD length = GetEnvironmentVariableW(name.c_str(), value.data(), size);
        if (length == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
            return std::nullopt;
        }
        value.resize(length);
        if (length < size) {
            break;
        }
    }
    std::string text(3 * value.size(), '\0');
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, value.data(), static_cast<int>(value.size()), text.data(),
                            static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

}  // namespace Orska::Support
