/// Floating-point numbers from text.
#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/numbers/DecimalDigits.h"
#include "PlatformAbstraction/numbers/DoublePowersOfTen.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "PlatformAbstraction/strings/NarrowForm.h"

namespace Orska::Support {

namespace {

/// Bytes; the rest of the text is not read.
constexpr std::size_t LONGEST_TEXT = 1279;
/// Digits are read until the mantissa reaches this, so one more digit never wraps it.
constexpr std::uint64_t MANTISSA_BOUND = 1844674407370955161;
/// Below this, reading digit by digit would not stop before 8 more digits, so they are read
/// at once.
constexpr std::uint64_t BLOCK_BOUND = 100'000'000'000;
/// Exponent digits are read until the exponent reaches this.
constexpr int EXPONENT_BOUND = 309;

/// The most characters that are read as one block.
constexpr std::size_t PLAIN_LENGTH = 16;

[[noreturn]] void ThrowInvalid(const char* in_text, std::size_t in_length) {
    const std::vector<orska_wstring> msgParams{orska_wstring(in_text, in_length)};
    ORSKA_THROW((TraceSite{"Orska::Support::NumberConverter::ConvertStringToFloatingPoint",
                           "PlatformAbstraction\\NumberConverter", 0}),
                NumberConversionInvalidDataException((L"StrToNumConvFailed"), msgParams));
}

/// The text between two positions, and the position in it, which each Take operation moves on.
struct Cursor {
    const char* m_start;
    const char* m_end;
    const char* m_at = m_start;

    bool IsAt(char in_character) const noexcept { return m_at != m_end && *m_at == in_character; }
    bool IsAtDigit() const noexcept { return m_at != m_end && DecimalDigits::IsDigit(*m_at); }

    bool Take(char in_character) noexcept {
        const bool isThere = IsAt(in_character);
        m_at += isThere ? 1 : 0;
        return isThere;
    }

    /// Returns true for '-'.
    bool TakeSign() noexcept {
        const bool isNegative = Take('-');
        if (!isNegative) {
            Take('+');
        }
        return isNegative;
    }

    void SkipBlanksAndControls() noexcept {
        while (m_at != m_end && static_cast<unsigned char>(*m_at - 1) < ' ') {
            ++m_at;
        }
    }

    /// Returns how many it skipped.
    int SkipDigits() noexcept {
        const char* const start = m_at;
        while (IsAtDigit()) {
            ++m_at;
        }
        return static_cast<int>(m_at - start);
    }

    /// The next 8 characters, with zero bytes for those after the end. The whole text must have at
    /// least 8 characters; fewer may be left.
    std::uint64_t Peek8() const noexcept {
        const std::ptrdiff_t ahead = m_end - m_at;
        return ahead >= 8 ? DecimalDigits::Load<std::uint64_t>(m_at)
                          : DecimalDigits::Load<std::uint64_t>(m_end - 8) >> (8 * (7 - ahead)) >> 8;
    }

    /// Takes up to 8 digits at once while the mantissa cannot reach its bound within them.
    void TakeBlocks(std::uint64_t& io_mantissa) noexcept {
        std::size_t count = 8;
        while (count == 8 && io_mantissa < BLOCK_BOUND) {
            const std::uint64_t block = Peek8() ^ DecimalDigits::ZEROS;
            count = DecimalDigits::CountLeadingDigits(block);
            const std::uint64_t digits = block << (4 * (8 - count)) << (4 * (8 - count));
            io_mantissa = io_mantissa * DecimalDigits::POWERS_OF_TEN[count] +
                          DecimalDigits::BlockValue(digits);
            m_at += count;
        }
    }

    /// Takes digits into the mantissa while it is below its bound. Returns how many.
    int TakeDigits(std::uint64_t& io_mantissa) noexcept {
        const char* const start = m_at;
        if (m_end - m_start >= 8) {
            TakeBlocks(io_mantissa);
        }
        while (IsAtDigit() && io_mantissa < MANTISSA_BOUND) {
            io_mantissa = io_mantissa * 10 + static_cast<std::uint64_t>(*m_at - '0');
            ++m_at;
        }
        return static_cast<int>(m_at - start);
    }

    /// Takes an 'e' and returns the exponent after it, else 0. Digits after the bound are left.
    int TakeExponent() noexcept {
        if (!Take('e') && !Take('E')) {
            return 0;
        }
        const bool isNegative = TakeSign();
        int exponent = 0;
        while (exponent < EXPONENT_BOUND && IsAtDigit()) {
            exponent = exponent * 10 + (*m_at - '0');
            ++m_at;
        }
        return isNegative ? -exponent : exponent;
    }
};

/// Scales a value to a result near a limit of the type.
double ScaleFar(double in_value, int in_exponent) noexcept {
    constexpr double GREATEST = std::numeric_limits<double>::max();
    constexpr double GREATEST_BY_20 = 1.7976931348623155e288;
    constexpr double RELATIVE_ERROR = 2.220446049250313e-16;
    if (in_exponent > GREATEST_POWER_OF_TEN) {
        return std::numeric_limits<double>::infinity();
    }
    if (in_exponent < -344) {
        return 0.0;
    }
    if (in_exponent < 0) {
        return in_value * 1e-40 * GetPowerOfTen(in_exponent + 40);
    }
    const double product = in_value * GetPowerOfTen(in_exponent);
    if (product <= GREATEST) {
        return product;
    }
    // The text of the greatest double can give infinity here. A product that stays in range tells
    // it from larger values.
    const double distance = in_value * GetPowerOfTen(in_exponent - 20) - GREATEST_BY_20;
    const double tolerance = GREATEST_BY_20 * RELATIVE_ERROR;
    return distance >= -tolerance && distance <= tolerance ? GREATEST : product;
}

/// One multiplication, which does not always give the nearest double: this is the required result.
double Scale(std::uint64_t in_mantissa, int in_exponent) noexcept {
    const auto value = static_cast<double>(in_mantissa);
    if (in_exponent == 0 || in_mantissa == 0) {
        return value;
    }
    if (in_exponent < LEAST_POWER_OF_TEN || in_exponent >= 288) [[unlikely]] {
        return ScaleFar(value, in_exponent);
    }
    return value * GetPowerOfTen(in_exponent);
}

/// How much of the text was used when reading stopped, or -1 when it did not stop after a digit or
/// after a digit and a point.
std::ptrdiff_t GetConsumed(const char* in_text, const char* in_stop) noexcept {
    const char* last = in_stop;
    if (last != in_text && last[-1] == '.') {
        --last;
    }
    return last != in_text && DecimalDigits::IsDigit(last[-1]) ? in_stop - in_text : -1;
}

double ParseDouble(const char* in_text, std::size_t in_length,
                   std::ptrdiff_t& out_consumed) noexcept {
    Cursor cursor{in_text, in_text + std::min(in_length, LONGEST_TEXT)};
    cursor.SkipBlanksAndControls();
    const bool isNegative = cursor.TakeSign();
    std::uint64_t mantissa = 0;  // leading zeros leave it 0
    cursor.TakeDigits(mantissa);
    int exponent = cursor.SkipDigits();
    if (cursor.Take('.')) {
        // After an integer part that is too long, the fraction no longer counts.
        if (exponent == 0) {
            exponent = -cursor.TakeDigits(mantissa);
        }
        cursor.SkipDigits();
    }
    exponent += cursor.TakeExponent();
    out_consumed = GetConsumed(in_text, cursor.m_at);
    const double value = Scale(mantissa, exponent);
    return isNegative ? -value : value;
}

/// True if the text, in any case, is a prefix of a word.
bool IsPrefix(std::string_view in_text, std::string_view in_word) noexcept {
    return EqualsIgnoringCase(in_text, in_word.substr(0, in_text.size()));
}

/// "inf" to "infinity" with an optional '-', and "nan".
bool ParseSpecialWord(std::string_view in_text, double& out_value) noexcept {
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    const bool isPositive = IsPrefix(in_text, "INFINITY");
    if (isPositive || (in_text.size() > 3 && IsPrefix(in_text, "-INFINITY"))) {
        out_value = isPositive ? INFINITE : -INFINITE;
        return true;
    }
    out_value = std::numeric_limits<double>::quiet_NaN();
    return EqualsIgnoringCase(in_text, "NAN");
}

/// Whether text can be a special word, by its length and its first letter.
bool MayBeSpecialWord(const char* in_text, std::size_t in_length) noexcept {
    if (in_length < 3 || in_length > 9) {
        return false;
    }
    const char letter = in_text[in_text[0] == '-' ? 1 : 0];
    return letter == 'i' || letter == 'I' || letter == 'n' || letter == 'N';
}

/// Removes the point from a block of digits and closes the gap; false when the block holds anything
/// else. No branch depends on where the point is or whether there is one.
template <class Block>
bool TakePoint(Block& io_block, std::size_t& out_decimals) noexcept {
    constexpr Block POINT = '.' ^ '0';
    const Block others = DecimalDigits::MarkOthers(io_block);
    const Block first = (others & (~others + 1)) >> 7;  // 1 in the first byte that is not a digit
    const Block whole = first * 0xff;                   // all of that byte
    if (((others & (others - 1)) | ((io_block & whole) ^ (first * POINT))) != 0) {
        return false;
    }
    const Block below = first - (first != 0 ? 1 : 0);
    io_block = (io_block & ~(below | whole)) | (io_block & below) << 8;
    out_decimals = DecimalDigits::CountBytesAbove(first);
    return true;
}

/// A number as it is in text: mantissa * 10^exponent.
struct Decimal {
    std::uint64_t m_mantissa = 0;
    int m_exponent = 0;
};

/// Reads 1 to 16 characters: digits with at most one point; false for all other text. The mantissa
/// is then far below its bound, and all of the text is used.
[[gnu::always_inline]] inline bool ReadPlain(const char* in_text, std::size_t in_length,
                                             Decimal& out_decimal) noexcept {
    std::size_t decimals = 0;
    if (in_length <= 8) {
        std::uint64_t block = in_length < 4 ? DecimalDigits::LoadUpTo3(in_text, in_length)
                                            : DecimalDigits::Load4To8(in_text, in_length);
        if (!TakePoint(block, decimals) || (in_length == 1 && *in_text == '.')) {
            return false;
        }
        out_decimal.m_mantissa = DecimalDigits::BlockValue(block);
    } else {
        DecimalDigits::WideBlock block = DecimalDigits::Load9To16(in_text, in_length);
        if (!TakePoint(block, decimals)) {
            return false;
        }
        out_decimal.m_mantissa = DecimalDigits::BlockValue(block);
    }
    out_decimal.m_exponent = -static_cast<int>(decimals);
    return true;
}

/// The index of an 'e' among the last 4 characters; else 0.
std::size_t FindExponent(const char* in_text, std::size_t in_length) noexcept {
    constexpr std::uint32_t LETTER_BITS = 0x40404040;  // not set in digits, points and signs
    if (in_length < 4) {
        return in_length == 3 && (in_text[1] | 0x20) == 'e' ? 1 : 0;
    }
    const std::size_t start = in_length - 4;
    const std::uint32_t letters = DecimalDigits::Load<std::uint32_t>(in_text + start) & LETTER_BITS;
    if (letters == 0) {
        return 0;
    }
    const std::size_t place = start + static_cast<std::size_t>(std::countr_zero(letters)) / 8;
    return (in_text[place] | 0x20) == 'e' ? place : 0;
}

/// Reads the same with a short exponent after it; false for all other text.
bool ReadWithExponent(const char* in_text, std::size_t in_length, Decimal& out_decimal) noexcept {
    const std::size_t length = FindExponent(in_text, in_length);
    if (length == 0 || length > PLAIN_LENGTH) {
        return false;
    }
    Cursor cursor{in_text + length, in_text + in_length};
    const int exponent = cursor.TakeExponent();
    if (cursor.m_at != cursor.m_end || !DecimalDigits::IsDigit(cursor.m_end[-1]) ||
        !ReadPlain(in_text, length, out_decimal)) {
        return false;
    }
    out_decimal.m_exponent += exponent;
    return true;
}

/// The sign of a text and the text after it. Removing the sign needs no branch.
struct SignedText {
    explicit SignedText(const char* in_text, std::size_t in_length) noexcept
        : m_isNegative(*in_text == '-'),
          m_text(in_text + (m_isNegative || *in_text == '+' ? 1 : 0)),
          m_length(in_length - static_cast<std::size_t>(m_text - in_text)) {}

    double Apply(double in_magnitude) const noexcept {
        return m_isNegative ? -in_magnitude : in_magnitude;
    }

    bool m_isNegative;
    const char* m_text;
    std::size_t m_length;
};

/// Reads text that is not a plain decimal. Not inlined, so that plain decimals stay quick.
[[gnu::noinline]] double ParseAnyText(const char* in_text, std::size_t in_length, bool in_strict) {
    if (in_length == 0) {
        return 0.0;
    }
    double value = 0.0;
    if (MayBeSpecialWord(in_text, in_length) && ParseSpecialWord({in_text, in_length}, value)) {
        return value;
    }
    const SignedText number(in_text, in_length);
    Decimal decimal;
    if (ReadWithExponent(number.m_text, number.m_length, decimal)) {
        return number.Apply(Scale(decimal.m_mantissa, decimal.m_exponent));
    }
    std::ptrdiff_t consumed = 0;
    value = ParseDouble(in_text, in_length, consumed);
    if (in_strict && consumed != static_cast<std::ptrdiff_t>(in_length)) {
        ThrowInvalid(in_text, in_length);
    }
    return value;
}

double Parse(const char* in_text, std::size_t in_length, bool in_strict) {
    if (in_length - 1 < PLAIN_LENGTH + 1) {
        const SignedText number(in_text, in_length);
        Decimal decimal;
        if (number.m_length - 1 < PLAIN_LENGTH &&
            ReadPlain(number.m_text, number.m_length, decimal)) [[likely]] {
            // The mantissa fits into a signed number, which is quicker to convert.
            return number.Apply(static_cast<double>(static_cast<std::int64_t>(decimal.m_mantissa)) *
                                GetPowerOfTen(decimal.m_exponent));
        }
    }
    return ParseAnyText(in_text, in_length, in_strict);
}

}  // namespace

template <ConvertibleFloat T>
T NumberConverter::ConvertStringToFloatingPoint(const char* in_text, std::size_t in_length,
                                                bool in_strict) {
    return static_cast<T>(Parse(in_text, in_length, in_strict));
}

template <ConvertibleFloat T>
T NumberConverter::ConvertStringToFloatingPoint(const orska_wstring& in_text, bool in_strict) {
    const NarrowForm narrow(in_text);
    return static_cast<T>(Parse(narrow.GetText(), narrow.GetLength(), in_strict));
}

template float NumberConverter::ConvertStringToFloatingPoint<float>(const char*, std::size_t, bool);
template double NumberConverter::ConvertStringToFloatingPoint<double>(const char*, std::size_t,
                                                                      bool);
template float NumberConverter::ConvertStringToFloatingPoint<float>(const orska_wstring&, bool);
template double NumberConverter::ConvertStringToFloatingPoint<double>(const orska_wstring&, bool);

}  // namespace Orska::Support
