/// The order of setting keys: that of `_stricmp`, bytes with ASCII letters as lower-case ones.
/// Constant; any thread may use it.
#ifndef PLATFORMABSTRACTION_SETTINGKEYORDER_H
#define PLATFORMABSTRACTION_SETTINGKEYORDER_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Orska::Support {

/// The first 8 bytes of a key in lower case, first byte highest, so that most keys are ordered by
/// one comparison of numbers; zero bytes stand behind a shorter key.
inline std::uint64_t MakeKeyPrefix(std::string_view in_key) noexcept {
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint64_t ONES = 0x0101010101010101;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, in_key.data(), std::min(in_key.size(), sizeof bytes));
    // Per byte, in its top bit: at least "A", and not above "Z".
    const std::uint64_t low = bytes & (ONES * 0x7F);
    const std::uint64_t isUpper =
        (low + ONES * (0x80 - 'A')) & ~(low + ONES * (0x7F - 'Z')) & ~bytes & (ONES * 0x80);
    return __builtin_bswap64(bytes | (isUpper >> 2));
}

/// A key to look for.
struct SettingKeyView {
    SettingKeyView(std::string_view in_text) noexcept
        : m_prefix(MakeKeyPrefix(in_text)), m_text(in_text) {}

    std::uint64_t m_prefix;
    std::string_view m_text;
};

/// A key that is kept.
struct SettingKey {
    explicit SettingKey(const SettingKeyView& in_key)
        : m_prefix(in_key.m_prefix), m_text(in_key.m_text) {}

    std::uint64_t m_prefix;
    std::string m_text;
};

struct SettingKeyLess {
    using is_transparent = void;

    template <typename Left, typename Right>
    bool operator()(const Left& in_left, const Right& in_right) const noexcept {
        return in_left.m_prefix != in_right.m_prefix ? in_left.m_prefix < in_right.m_prefix
                                                     : IsRestLess(in_left.m_text, in_right.m_text);
    }

private:
    static unsigned char ToLower(char in_byte) noexcept {
        const bool isUpper = in_byte >= 'A' && in_byte <= 'Z';
        return static_cast<unsigned char>(isUpper ? in_byte - 'A' + 'a' : in_byte);
    }

    static bool IsRestLess(std::string_view in_left, std::string_view in_right) noexcept {
        const std::size_t common = std::min(in_left.size(), in_right.size());
        for (std::size_t index = sizeof(std::uint64_t); index < common; ++index) {
            const unsigned char left = ToLower(in_left[index]);
            const unsigned char right = ToLower(in_right[index]);
            if (left != right) {
                return left < right;
            }
        }
        return in_left.size() < in_right.size();
    }
};

}  // namespace Orska::Support

#endif
