/// Text from floating-point numbers.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "PlatformAbstraction/numbers/DecimalDigits.h"
#include "PlatformAbstraction/numbers/DoublePowersOfTen.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"

namespace Orska::Support {

namespace {

/// The most decimals, and the most significant digits, of the plain form.
constexpr int MOST_DECIMALS = 15;
/// Magnitudes above this have no plain form.
constexpr double PLAIN_LIMIT = 2147483647.0;
/// The significant digits of each type.
template <class T>
constexpr int SIGNIFICANT_DIGITS = sizeof(T) == sizeof(float) ? 7 : 15;

enum class Zeros { DROPPED, KEPT };

/// The plain form of a magnitude, before it becomes text.
struct PlainNumber {
    std::uint64_t m_whole;
    std::uint64_t m_fraction;  ///< scaled by 10^decimals; equal to 10^decimals after some ties
};

PlainNumber Round(double in_magnitude, int in_decimals) noexcept {
    std::uint64_t whole = static_cast<std::uint64_t>(static_cast<std::int64_t>(in_magnitude));
    const double rest = in_magnitude - static_cast<double>(static_cast<std::int64_t>(whole));
    if (in_decimals == 0) {
        whole += rest > 0.5 || (rest == 0.5 && whole % 2 == 1) ? 1 : 0;
        return {whole, 0};
    }
    const double scaled = rest * GetPowerOfTen(in_decimals);
    auto fraction = static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled));
    const double remainder = scaled - static_cast<double>(static_cast<std::int64_t>(fraction));
    if (remainder > 0.5) {
        ++fraction;
        if (fraction >= DecimalDigits::POWERS_OF_TEN[static_cast<std::size_t>(in_decimals)]) {
            fraction = 0;
            ++whole;
        }
    } else if (remainder == 0.5 && (fraction == 0 || fraction % 2 == 1)) {
        // Ties go to the even fraction, except from 0. On purpose it does not carry: 0.95 with one
        // decimal has the fraction 10, which is written as "0.1".
        ++fraction;
    }
    return {whole, fraction};
}

/// Writes up to 10 digits, and 8 bytes even for fewer digits. Returns the end of the digits.
char* WriteWhole(std::uint64_t in_whole, char* out_text) noexcept {
    auto rest = static_cast<std::uint32_t>(in_whole);
    if (rest >= DecimalDigits::TEN_TO_8) [[unlikely]] {
        const std::uint32_t front = rest / static_cast<std::uint32_t>(DecimalDigits::TEN_TO_8);
        rest -= front * static_cast<std::uint32_t>(DecimalDigits::TEN_TO_8);
        DecimalDigits::StorePair(out_text, front);
        if (front < 10) {
            out_text[0] = out_text[1];
        }
        out_text += front < 10 ? 1 : 2;
        DecimalDigits::Store(out_text, DecimalDigits::MakeBlock(rest) | DecimalDigits::ZEROS);
        return out_text + 8;
    }
    const std::uint64_t block = DecimalDigits::MakeBlock(rest);
    const unsigned zeros = DecimalDigits::CountLeadingZeros(block);
    DecimalDigits::Store(out_text, (block | DecimalDigits::ZEROS) >> (8 * zeros));
    return out_text + 8 - zeros;
}

/// Writes a fraction other than 0 with its leading zeros: 8 bytes for up to 8 decimals, else 16,
/// even if fewer are wanted. Returns the end of the digits.
char* WriteFraction(std::uint64_t in_fraction, std::size_t in_decimals, Zeros in_zeros,
                    char* out_text) noexcept {
    if (in_fraction == DecimalDigits::POWERS_OF_TEN[in_decimals]) [[unlikely]] {
        // A tie did not carry: one digit more than there are decimals.
        *out_text++ = '1';
        std::memset(out_text, '0', in_decimals);
        return out_text + (in_zeros == Zeros::KEPT ? in_decimals : 0);
    }
    const std::uint64_t digits = in_fraction * DecimalDigits::POWERS_OF_TEN[16 - in_decimals];
    const std::uint64_t front = digits / DecimalDigits::TEN_TO_8;
    const std::uint64_t back = digits - front * DecimalDigits::TEN_TO_8;
    std::uint64_t block = DecimalDigits::MakeBlock(static_cast<std::uint32_t>(front));
    DecimalDigits::Store(out_text, block | DecimalDigits::ZEROS);
    char* end = out_text + 8;
    if (in_decimals > 8) {
        const std::uint64_t last = DecimalDigits::MakeBlock(static_cast<std::uint32_t>(back));
        DecimalDigits::Store(end, last | DecimalDigits::ZEROS);
        if (last != 0) {
            block = last;
            end += 8;
        }
    }
    return in_zeros == Zeros::KEPT ? out_text + in_decimals
                                   : end - DecimalDigits::CountTrailingZeros(block);
}

/// Writes from left to right. Bytes written after the text stay within the promised sizes: with 15
/// significant digits, more than 8 decimals leave at most 6 digits before the point.
std::size_t WritePlain(double in_value, int in_decimals, Zeros in_zeros,
                       char* out_buffer) noexcept {
    const PlainNumber number = Round(std::fabs(in_value), in_decimals);
    *out_buffer = '-';
    char* out = WriteWhole(number.m_whole, out_buffer + (in_value < 0 ? 1 : 0));
    const auto decimals = static_cast<std::size_t>(in_decimals);
    if (number.m_fraction != 0) {
        *out = '.';
        out = WriteFraction(number.m_fraction, decimals, in_zeros, out + 1);
    } else if (in_zeros == Zeros::KEPT && decimals > 0) {
        *out = '.';
        std::memset(out + 1, '0', decimals);
        out += 1 + decimals;
    }
    *out = '\0';
    return static_cast<std::size_t>(out - out_buffer);
}

std::size_t WriteSpecial(double in_value, char* out_buffer) noexcept {
    const char* const text = std::isnan(in_value) ? "NaN" : in_value > 0 ? "INFINITY" : "-INFINITY";
    const std::size_t length = std::strlen(text);
    std::memcpy(out_buffer, text, length + 1);
    return length;
}

/// Writes as "%.*g" or "%e" in the C locale. Neither leaves a point at the end or before the
/// exponent, so there is none to remove.
std::size_t WriteAsC(double in_value, std::chars_format in_format, int in_precision,
                     char* out_buffer) noexcept {
    const std::to_chars_result result =
        std::to_chars(out_buffer, out_buffer + NumberConverter::FLOAT_TEXT_SIZE - 1, in_value,
                      in_format, in_precision);
    *result.ptr = '\0';
    return static_cast<std::size_t>(result.ptr - out_buffer);
}

/// Zero has a plain form, so it is written without a sign.
bool HasPlainForm(double in_magnitude, int in_digits) noexcept {
    return (in_magnitude <= PLAIN_LIMIT && in_magnitude >= GetPowerOfTen(-in_digits)) ||
           in_magnitude == 0;
}

/// Counts the digits before the point of a magnitude that has a plain form; none for 0.
int CountWholeDigits(double in_magnitude) noexcept {
    int digits = 0;
    for (int i = 0; i <= 9; ++i) {
        digits += in_magnitude >= GetPowerOfTen(i) ? 1 : 0;
    }
    return digits;
}

std::size_t WriteSignificant(double in_value, int in_digits, char* out_buffer) noexcept {
    const double magnitude = std::fabs(in_value);
    if (!std::isfinite(in_value)) {
        return WriteSpecial(in_value, out_buffer);
    }
    if (!HasPlainForm(magnitude, in_digits)) {
        return WriteAsC(in_value, std::chars_format::general, in_digits, out_buffer);
    }
    const int decimals = in_digits - std::min(in_digits, CountWholeDigits(magnitude));
    return WritePlain(in_value, decimals, Zeros::DROPPED, out_buffer);
}

std::size_t WriteDecimals(double in_value, int in_decimals, Zeros in_zeros,
                          char* out_buffer) noexcept {
    const int decimals = std::clamp(in_decimals, 0, MOST_DECIMALS);
    if (!std::isfinite(in_value)) {
        return WriteSpecial(in_value, out_buffer);
    }
    if (HasPlainForm(std::fabs(in_value), decimals)) {
        return WritePlain(in_value, decimals, in_zeros, out_buffer);
    }
    constexpr int DEFAULT_PRECISION = 6;
    return in_zeros == Zeros::KEPT
               ? WriteAsC(in_value, std::chars_format::scientific, DEFAULT_PRECISION, out_buffer)
               : WriteAsC(in_value, std::chars_format::general, decimals, out_buffer);
}

}  // namespace

template <ConvertibleFloat T>
std::size_t NumberConverter::ConvertFloatingPointToBuffer(T in_value, char* out_buffer) {
    return WriteSignificant(in_value, SIGNIFICANT_DIGITS<T>, out_buffer);
}

template <ConvertibleFloat T>
std::string NumberConverter::ConvertFloatingPointToString(T in_value) {
    char buffer[FLOAT_TEXT_SIZE];
    return std::string(buffer, ConvertFloatingPointToBuffer(in_value, buffer));
}

template <ConvertibleFloat T>
orska_wstring NumberConverter::ConvertFloatingPointToWString(T in_value) {
    char buffer[FLOAT_TEXT_SIZE];
    const std::size_t length = ConvertFloatingPointToBuffer(in_value, buffer);
    orska_wstring text;
    text.SetFromUtf8(buffer,
                     static_cast<std::int64_t>(length));  // the ANSI encoding may lack ASCII
    return text;
}

std::size_t NumberConverter::ConvertDoubleToBufferFixed(double in_value, int in_decimals,
                                                        char* out_buffer) {
    return WriteDecimals(in_value, in_decimals, Zeros::KEPT, out_buffer);
}

std::size_t NumberConverter::ConvertDoubleToBufferTrimmed(double in_value, int in_decimals,
                                                          char* out_buffer) {
    return WriteDecimals(in_value, in_decimals, Zeros::DROPPED, out_buffer);
}

template std::size_t NumberConverter::ConvertFloatingPointToBuffer<float>(float, char*);
template std::size_t NumberConverter::ConvertFloatingPointToBuffer<double>(double, char*);
template std::string NumberConverter::ConvertFloatingPointToString<float>(float);
template std::string NumberConverter::ConvertFloatingPointToString<double>(double);
template orska_wstring NumberConverter::ConvertFloatingPointToWString<float>(float);
template orska_wstring NumberConverter::ConvertFloatingPointToWString<double>(double);

}  // namespace Orska::Support
