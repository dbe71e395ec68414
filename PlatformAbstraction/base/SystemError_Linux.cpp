#include <cerrno>
#include <cstring>
#include <cwchar>

#include "PlatformAbstraction/base/SystemError.h"

namespace Orska::Support {

namespace {

void AppendUtf8(char32_t in_codePoint, std::string& io_text) {
    constexpr char32_t LEADS[] = {0, 0xC0, 0xE0, 0xF0};
    const int followers =
        (in_codePoint >= 0x80) + (in_codePoint >= 0x800) + (in_codePoint >= 0x10000);
    io_text += static_cast<char>(LEADS[followers] | in_codePoint >> 6 * followers);
    for (int i = followers - 1; i >= 0; --i) {
        io_text += static_cast<char>(0x80 | (in_codePoint >> 6 * i & 0x3F));
    }
}

/// Converts from the charset of the thread's locale, which the C library's messages are in.
std::string DecodeLocaleText(const char* in_text) {
    constexpr char32_t REPLACEMENT = 0xFFFD;
    std::string text;
    std::mbstate_t state{};
    std::size_t left = std::strlen(in_text);
    while (left > 0) {
        wchar_t codePoint = 0;
        std::size_t size = std::mbrtowc(&codePoint, in_text, left, &state);
        if (size > left) {  // not a character of the charset, or truncated
            codePoint = static_cast<wchar_t>(REPLACEMENT);
            size = 1;
            state = {};
        }
        AppendUtf8(static_cast<char32_t>(codePoint), text);
        in_text += size;
        left -= size;
    }
    return text;
}

}  // namespace

std::uint32_t GetLastErrorCode() noexcept { return static_cast<std::uint32_t>(errno); }

bool FormatSystemMessage(std::uint32_t in_code, std::string& out_text) {
    const int code = static_cast<int>(in_code);
    // strerror_r makes up a text for every number; only this call tells which errors exist.
    if (strerrordesc_np(code) == nullptr) {
        errno = EINVAL;
        return false;
    }
    char buffer[256];
    out_text = DecodeLocaleText(strerror_r(code, buffer, sizeof buffer));
    return true;
}

bool FormatNtStatusMessage(std::uint32_t /*in_code*/, std::string& /*out_text*/) {
    errno = ENOSYS;
    return false;
}

}  // namespace Orska::Support
