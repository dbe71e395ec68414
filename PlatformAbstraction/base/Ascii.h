/// Case and blanks of ASCII text, the same in every locale: in Turkish the C library does not pair
/// "i" and "I". Bytes and code units above 127 are never changed, so UTF-8 stays valid.
#ifndef PLATFORMABSTRACTION_BASE_ASCII_H
#define PLATFORMABSTRACTION_BASE_ASCII_H

#include <algorithm>
#include <string>
#include <string_view>

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

template <typename Char>
constexpr Char ToLowerAscii(Char in_char) noexcept {
    return in_char >= 'A' && in_char <= 'Z' ? static_cast<Char>(in_char + ('a' - 'A')) : in_char;
}

template <typename Char>
constexpr Char ToUpperAscii(Char in_char) noexcept {
    return in_char >= 'a' && in_char <= 'z' ? static_cast<Char>(in_char - ('a' - 'A')) : in_char;
}

/// A blank, tab, line feed, vertical tab, form feed or carriage return.
template <typename Char>
constexpr bool IsAsciiBlank(Char in_char) noexcept {
    return in_char == ' ' || (in_char >= '\t' && in_char <= '\r');
}

template <typename Char>
constexpr bool IsAsciiLetterOrDigit(Char in_char) noexcept {
    const Char folded = ToLowerAscii(in_char);
    return (folded >= 'a' && folded <= 'z') || (in_char >= '0' && in_char <= '9');
}

/// The text with its letters in lower case: equal for texts that EqualsIgnoringCase.
inline std::string FoldCase(std::string_view in_text) {
    std::string text(in_text);
    for (char& byte : text) byte = ToLowerAscii(byte);
    return text;
}

inline std::string UpperCaseAscii(std::string_view in_text) {
    std::string text(in_text);
    for (char& byte : text) byte = ToUpperAscii(byte);
    return text;
}

constexpr bool EqualsIgnoringCase(std::string_view in_left, std::string_view in_right) noexcept {
    if (in_left.size() != in_right.size()) return false;
    // Most texts that match are equal byte for byte.
    return in_left == in_right ||
           std::equal(in_left.begin(), in_left.end(), in_right.begin(), [](char in_a, char in_b) {
               return ToLowerAscii(in_a) == ToLowerAscii(in_b);
           });
}

/// The order of `_stricmp`: bytes, with letters in lower case.
constexpr bool IsLessIgnoringCase(std::string_view in_left, std::string_view in_right) noexcept {
    return std::lexicographical_compare(in_left.begin(), in_left.end(), in_right.begin(),
                                        in_right.end(), [](char in_a, char in_b) {
                                            return static_cast<unsigned char>(ToLowerAscii(in_a)) <
                                                   static_cast<unsigned char>(ToLowerAscii(in_b));
                                        });
}

constexpr std::string_view TrimLeft(std::string_view in_text) noexcept {
    while (!in_text.empty() && IsAsciiBlank(in_text.front())) in_text.remove_prefix(1);
    return in_text;
}

/// The text without blanks at both ends; a view into it.
constexpr std::string_view Trim(std::string_view in_text) noexcept {
    in_text = TrimLeft(in_text);
    while (!in_text.empty() && IsAsciiBlank(in_text.back())) in_text.remove_suffix(1);
    return in_text;
}

/// The same, with `in_blanks` as the blanks.
constexpr std::string_view Trim(std::string_view in_text, std::string_view in_blanks) noexcept {
    const std::size_t first = std::min(in_text.find_first_not_of(in_blanks), in_text.size());
    const std::size_t end = in_text.find_last_not_of(in_blanks) + 1;
    return in_text.substr(first, end - std::min(first, end));
}

}  // namespace Orska::Support

#endif
