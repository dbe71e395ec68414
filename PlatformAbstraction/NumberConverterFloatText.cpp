/// Text from floating-point numbers.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "PlatformAbstraction/DecimalDigits.h"
#include "PlatformAbstraction/DoublePowersOfTen.h"
#include "PlatformAbstraction/NumberConverter.h"

namespace Orska::Support {

namespace {

/// Also the most significant digits that the plain form is asked for.
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
    std::uint64_t m_fraction;  ///< scaled by 10^decimals; just as large as that after some ties
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
        // Ties go to the even fraction, except from 0. Such a tie is meant not to carry: 0.95 with
        // one decimal has the fraction 10, which comes out as "0.1".
        ++fraction;
    }
    return {whole, fraction};
}

/// Digits of a fraction, with the leading zeros that make them `in_decimals` long.
/// @return how many; one more than decimals when a tie did not carry
std::size_t WriteFraction(std::uint64_t in_fraction, std::size_t in_decimals, Zeros in_zeros,
                          char* out_text) noexcept {
    char digits[20];
    char* const end = digits + sizeof(digits);
    DecimalDigits::WriteAll(end, in_fraction);
    const std::size_t length = std::max(in_decimals, DecimalDigits::CountDigits(in_fraction));
    const char* stop = end;
    if (in_zeros == Zeros::DROPPED) {
        while (stop[-1] == '0') {
            --stop;
        }
    }
    std::memcpy(out_text, end - length, length);
    return length - static_cast<std::size_t>(end - stop);
}

std::size_t WritePlain(double in_value, int in_decimals, Zeros in_zeros,
                       char* out_buffer) noexcept {
    const PlainNumber number = Round(std::fabs(in_value), in_decimals);
    char* out = out_buffer;
    if (in_value < 0) {  // not for a negative zero
        *out++ = '-';
    }
    const std::size_t wholeLength = DecimalDigits::CountDigits(number.m_whole);
    char digits[10];
    DecimalDigits::WriteAll(digits + sizeof(digits), static_cast<std::uint32_t>(number.m_whole));
    std::memcpy(out, digits + sizeof(digits) - wholeLength, wholeLength);
    out += wholeLength;
    if (number.m_fraction != 0 || (in_zeros == Zeros::KEPT && in_decimals > 0)) {
        *out++ = '.';
        out +=
            WriteFraction(number.m_fraction, static_cast<std::size_t>(in_decimals), in_zeros, out);
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

/// What "%.*g" or "%e" writes in the C locale. Neither leaves a point at the end or in front of the
/// exponent, so there is none to take away.
std::size_t WriteAsC(double in_value, std::chars_format in_format, int in_precision,
                     char* out_buffer) noexcept {
    const std::to_chars_result result =
        std::to_chars(out_buffer, out_buffer + NumberConverter::FLOAT_TEXT_SIZE - 1, in_value,
                      in_format, in_precision);
    *result.ptr = '\0';
    return static_cast<std::size_t>(result.ptr - out_buffer);
}

/// Zero has a plain form, so that it is written without a sign.
bool HasPlainForm(double in_magnitude, int in_digits) noexcept {
    return (in_magnitude <= PLAIN_LIMIT && in_magnitude >= GetPowerOfTen(-in_digits)) ||
           in_magnitude == 0;
}

std::size_t WriteSignificant(double in_value, int in_digits, char* out_buffer) noexcept {
    const double magnitude = std::fabs(in_value);
    if (!std::isfinite(in_value)) {
        return WriteSpecial(in_value, out_buffer);
    }
    if (!HasPlainForm(magnitude, in_digits)) {
        return WriteAsC(in_value, std::chars_format::general, in_digits, out_buffer);
    }
    const auto whole = static_cast<std::uint64_t>(static_cast<std::int64_t>(magnitude));
    const int wholeDigits = whole == 0 ? 0 : static_cast<int>(DecimalDigits::CountDigits(whole));
    return WritePlain(in_value, in_digits - std::min(in_digits, wholeDigits), Zeros::DROPPED,
                      out_buffer);
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
    // Widened here and not read in the ANSI encoding, which need not hold ASCII.
    char16_t units[FLOAT_TEXT_SIZE];
    std::copy_n(buffer, length, units);
    return orska_wstring(units, length);
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
