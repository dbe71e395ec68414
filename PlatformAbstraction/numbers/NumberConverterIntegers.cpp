/// Integers from text.
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/numbers/DecimalDigits.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "PlatformAbstraction/strings/NarrowForm.h"

namespace Orska::Support {

namespace {

constexpr TraceSite SITE{"Orska::Support::StringToInteger", "PlatformAbstraction\\NumberConverter",
                         0};

enum class Outcome { VALUE, INVALID, TOO_HIGH, TOO_LOW, MINUS };

[[noreturn]] void ThrowFor(Outcome in_outcome, const char* in_text, std::size_t in_length) {
    const std::vector<orska_wstring> msgParams{in_length == 0 ? orska_wstring("")
                                                              : orska_wstring(in_text, in_length)};
    switch (in_outcome) {
        case Outcome::TOO_HIGH:
            ORSKA_THROW(SITE, NumberConversionOutOfRangeException((L"StrToNumConvFailedOverflow"),
                                                                  msgParams));
        case Outcome::TOO_LOW:
            ORSKA_THROW(SITE, NumberConversionOutOfRangeException((L"StrToNumConvFailedUnderflow"),
                                                                  msgParams));
        case Outcome::MINUS:
            ORSKA_THROW(SITE, NumberConversionOutOfRangeException((L"StrToNumConvFailedUnsigned"),
                                                                  msgParams));
        default:
            ORSKA_THROW(SITE,
                        NumberConversionInvalidDataException((L"StrToNumConvFailed"), msgParams));
    }
}

/// The greatest magnitude of a value of this sign.
template <class T>
constexpr std::uint64_t GetLimit(bool in_isNegative) noexcept {
    return static_cast<std::uint64_t>(std::numeric_limits<T>::max()) + (in_isNegative ? 1u : 0u);
}

template <class T>
constexpr T ApplySign(std::uint64_t in_magnitude, bool in_isNegative) noexcept {
    const std::uint64_t ones = std::uint64_t{0} - (in_isNegative ? 1u : 0u);
    return static_cast<T>((in_magnitude ^ ones) - ones);
}

/// Reads any text, character by character. The quick way below reads only a sign and a likely
/// number of digits.
template <class T>
Outcome ParseByCharacter(const char* in_text, std::size_t in_length, bool in_strict, T& out_value) {
    const bool isNegative = in_length > 0 && in_text[0] == '-';
    const std::size_t signLength = isNegative || (in_length > 0 && in_text[0] == '+') ? 1 : 0;
    if (in_strict && in_length == signLength) {
        return Outcome::INVALID;
    }
    const std::uint64_t limit = GetLimit<T>(isNegative);
    std::uint64_t magnitude = 0;
    bool isOutside = false;
    for (std::size_t i = signLength; i < in_length; ++i) {
        if (!DecimalDigits::IsDigit(in_text[i])) {
            if (in_strict) {
                return Outcome::INVALID;
            }
            break;
        }
        // Once outside the range it stays outside, but the rest is still checked for digits.
        const auto digit = static_cast<std::uint64_t>(in_text[i] - '0');
        isOutside = isOutside || magnitude > (limit - digit) / 10;
        magnitude = magnitude * 10 + digit;
    }
    if (isNegative && std::is_unsigned_v<T>) {
        return Outcome::MINUS;  // whatever the digits: "-0" too
    }
    if (isOutside) {
        return isNegative ? Outcome::TOO_LOW : Outcome::TOO_HIGH;
    }
    out_value = ApplySign<T>(magnitude, isNegative);
    return Outcome::VALUE;
}

template <class T>
[[gnu::noinline]] T ParseOrThrow(const char* in_text, std::size_t in_length, bool in_strict) {
    T value{};
    const Outcome outcome = ParseByCharacter(in_text, in_length, in_strict, value);
    if (outcome != Outcome::VALUE) {
        ThrowFor(outcome, in_text, in_length);
    }
    return value;
}

/// The value of 17 to 20 digits; false when they are not digits or exceed 64 bits.
bool ReadLong(const char* in_text, std::size_t in_length, std::uint64_t& out_value) noexcept {
    const std::size_t frontLength = in_length - 16;
    const std::uint64_t front = DecimalDigits::Load4To8(in_text, 4) << (8 * (4 - frontLength));
    const __m128i back = DecimalDigits::Load16(in_text + frontLength);
    if (!DecimalDigits::AreDigits(front) || !DecimalDigits::AreDigits(back)) {
        return false;
    }
    std::uint64_t upper = 0;
    return !__builtin_mul_overflow(std::uint64_t{DecimalDigits::BlockValue(front)},
                                   DecimalDigits::TEN_TO_16, &upper) &&
           !__builtin_add_overflow(upper, DecimalDigits::BlockValue(back), &out_value);
}

/// The value of text that is nothing but digits, as many as T is likely to have; false otherwise.
template <class T>
bool ReadDigits(const char* in_text, std::size_t in_length, std::uint64_t& out_value) noexcept {
    if (in_length <= 8) {
        if (in_length == 0) {
            return false;
        }
        const std::uint64_t block = in_length < 4 ? DecimalDigits::LoadUpTo3(in_text, in_length)
                                                  : DecimalDigits::Load4To8(in_text, in_length);
        out_value = DecimalDigits::BlockValue(block);
        return DecimalDigits::AreDigits(block);
    }
    if (sizeof(T) >= 4 && in_length <= 16) {
        const __m128i block =
            DecimalDigits::ToRegister(DecimalDigits::Load9To16(in_text, in_length));
        out_value = DecimalDigits::BlockValue(block);
        return DecimalDigits::AreDigits(block);
    }
    return sizeof(T) == 8 && in_length <= 20 && ReadLong(in_text, in_length, out_value);
}

template <class T>
T Parse(const char* in_text, std::size_t in_length, bool in_strict) {
    if (in_length == 0) {
        ThrowFor(Outcome::INVALID, in_text, in_length);
    }
    // Removing the sign needs no branch, which matters because signs are hard to predict.
    const bool isNegative = std::is_signed_v<T> && in_text[0] == '-';
    const std::size_t signLength = isNegative || in_text[0] == '+' ? 1 : 0;
    std::uint64_t magnitude = 0;
    if (ReadDigits<T>(in_text + signLength, in_length - signLength, magnitude) &&
        magnitude <= GetLimit<T>(isNegative)) [[likely]] {
        return ApplySign<T>(magnitude, isNegative);
    }
    return ParseOrThrow<T>(in_text, in_length, in_strict);
}

}  // namespace

template <ConvertibleInteger T>
T NumberConverter::StringToInteger(const char* in_text, std::size_t in_length, bool in_strict) {
    return Parse<T>(in_text, in_length, in_strict);
}

template <ConvertibleInteger T>
T NumberConverter::StringToInteger(const char* in_text, bool in_strict) {
    const std::size_t length = in_text == nullptr ? 0 : std::strlen(in_text);
    if (length == 0 && !in_strict) {
        return 0;
    }
    return Parse<T>(in_text, length, in_strict);
}

template <ConvertibleInteger T>
T NumberConverter::StringToInteger(const orska_wstring& in_text, bool in_strict) {
    const NarrowForm narrow(in_text);
    return Parse<T>(narrow.GetText(), narrow.GetLength(), in_strict);
}

template <ConvertibleInteger T>
T NumberConverter::StringToIntegerUnchecked(const orska_wstring& in_text) noexcept {
    std::u16string_view units = in_text.GetView();
    const bool isNegative = !units.empty() && units.front() == u'-';
    if (isNegative || (!units.empty() && units.front() == u'+')) {
        units.remove_prefix(1);
    }
    // A sum modulo 2^64, cut at the end, equals one modulo 2^8 to 2^32.
    std::uint64_t magnitude = 0;
    for (const char16_t unit : units) {
        magnitude = magnitude * 10 + unit - u'0';
    }
    return ApplySign<T>(magnitude, isNegative);
}

#define ORSKA_INSTANTIATE(T)                                                        \
    template T NumberConverter::StringToInteger<T>(const char*, std::size_t, bool); \
    template T NumberConverter::StringToInteger<T>(const char*, bool);              \
    template T NumberConverter::StringToInteger<T>(const orska_wstring&, bool);     \
    template T NumberConverter::StringToIntegerUnchecked<T>(const orska_wstring&) noexcept;

ORSKA_FOR_EACH_INTEGER(ORSKA_INSTANTIATE)

}  // namespace Orska::Support
