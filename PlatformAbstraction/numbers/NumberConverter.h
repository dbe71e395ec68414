/// Conversion between text and numbers: strict about what it accepts, and quick.
///
/// No conversion depends on the locale, and none reads a byte outside the text it was given. None
/// allocates memory, except those that return a string, those that take an orska_wstring whose text
/// has no narrow form on the stack, and those that throw. All functions are pure; any thread may
/// call them.
///
/// Conversions from an orska_wstring read its narrow form in the process ANSI encoding. Every
/// message parameter named "the input" is the whole narrow text, converted back from that encoding.
#ifndef PLATFORMABSTRACTION_NUMBERCONVERTER_H
#define PLATFORMABSTRACTION_NUMBERCONVERTER_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>

#include "../strings/orska_wstring.h"

namespace Orska::Support {

/// The integer types that have conversions: 8, 16, 32 and 64 bits, signed and unsigned.
template <class T>
concept ConvertibleInteger = std::same_as<T, std::int8_t> || std::same_as<T, std::uint8_t> ||
    std::same_as<T, std::int16_t> || std::same_as<T, std::uint16_t> ||
    std::same_as<T, std::int32_t> || std::same_as<T, std::uint32_t> ||
    std::same_as<T, std::int64_t> || std::same_as<T, std::uint64_t>;

/// The floating-point types that have conversions: single and double precision.
template <class T>
concept ConvertibleFloat = std::same_as<T, float> || std::same_as<T, double>;

class NumberConverter {
public:
    /// Bytes that hold the text of any integer type and its NUL.
    static constexpr std::uint16_t INTEGER_TEXT_SIZE = 21;
    /// Bytes that hold the text of ConvertFloatingPointToBuffer and its NUL.
    static constexpr std::size_t FLOAT_TEXT_SIZE = 25;
    /// Bytes that hold the text of the formatters that are given a number of decimals, and its NUL.
    static constexpr std::size_t DECIMALS_TEXT_SIZE = 32;

    /// Reads decimal digits after an optional '-' or '+'. White space is not skipped.
    /// @param in_length  bytes
    /// @param in_strict  refuse text that holds anything else, or only a sign; otherwise reading
    ///                   stops there, and no digits are 0
    /// @throws NumberConversionInvalidDataException "StrToNumConvFailed" with the input, for empty
    ///         text (strict or not) and for text that strict reading refuses
    /// @throws NumberConversionOutOfRangeException with the input: "StrToNumConvFailedOverflow",
    ///         "StrToNumConvFailedUnderflow", and "StrToNumConvFailedUnsigned" for a leading '-' of
    ///         an unsigned type, whatever follows ("-0" too)
    template <ConvertibleInteger T>
    static T StringToInteger(const char* in_text, std::size_t in_length, bool in_strict);

    /// The same up to the first NUL byte, except that empty text returns 0 if not strict.
    template <ConvertibleInteger T>
    static T StringToInteger(const char* in_text, bool in_strict);

    /// The same on the narrow form of a string; NULL counts as empty text, which always throws.
    template <ConvertibleInteger T>
    static T StringToInteger(const orska_wstring& in_text, bool in_strict);

    /// For text that was validated before: checks nothing and throws nothing. Each UTF-16 code unit
    /// after an optional '-' or '+' counts as its code minus '0', and the sum wraps silently in T;
    /// a '-' negates it, modulo 2^n for an unsigned T. NULL and empty text are 0.
    template <ConvertibleInteger T>
    static T StringToIntegerUnchecked(const orska_wstring& in_text) noexcept;

    /// Reads a decimal number: blanks and control characters, a sign, digits with an optional
    /// point, an optional exponent. "inf" to "infinity" (each prefix), with an optional '-', and
    /// "nan" are the special values, in any case.
    ///
    /// The result is 19 or 20 significant digits times one power of ten, so it can differ from the
    /// nearest value in the last place. Only the first 1,279 bytes are read.
    /// @param in_length  bytes; empty text is 0, strict or not
    /// @param in_strict  refuse text that has more after the number
    /// @throws NumberConversionInvalidDataException if strict: "StrToNumConvFailed" with the input
    template <ConvertibleFloat T>
    static T ConvertStringToFloatingPoint(const char* in_text, std::size_t in_length,
                                          bool in_strict);

    /// The same on the narrow form of a string; NULL counts as empty text.
    template <ConvertibleFloat T>
    static T ConvertStringToFloatingPoint(const orska_wstring& in_text, bool in_strict);

    /// Writes a value in decimal, right-aligned at the end of a buffer, with a NUL in its last
    /// byte. Bytes before the text may change. Made for buffers that hold every value of T (5, 7,
    /// 12 and 21 bytes for 8 to 64 bits); in a shorter one it works as IntegerToBufferChecked.
    /// @param in_bufferLength  bytes
    /// @return the first character of the text, inside the buffer
    /// @throws NumberConversionInvalidDataException "NumToStrConvFailed" when the text does not
    ///         fit; the least 64-bit value throws as CopyMinimumIntToBuffer does
    template <ConvertibleInteger T>
    static char* IntegerToBuffer(T in_value, std::uint16_t in_bufferLength, char* out_buffer);

    /// The same for buffers of any length, 0 included.
    template <ConvertibleInteger T>
    static char* IntegerToBufferChecked(T in_value, std::uint16_t in_bufferLength,
                                        char* out_buffer);

    /// Writes "-9223372036854775808", the one value that cannot be negated, right-aligned at the
    /// end of a buffer, without a NUL.
    /// @param in_bufferLength  bytes
    /// @return the first character of the text
    /// @throws NumberConversionInvalidDataException "StrToNumConvFailed" with the text as parameter
    ///         when the buffer has fewer than 20 bytes
    static char* CopyMinimumIntToBuffer(std::uint16_t in_bufferLength, char* out_buffer);

    template <ConvertibleInteger T>
    static std::string IntegerToString(T in_value);
    template <ConvertibleInteger T>
    static orska_wstring IntegerToWString(T in_value);

    /// Writes a value with 7 (float) or 15 (double) significant digits, without trailing zeros, and
    /// a NUL: "NaN", "INFINITY" or "-INFINITY"; plain decimals for magnitudes from 10^-7 or 10^-15
    /// up to 2147483647, and for zero, which has no sign; "%.7g" or "%.15g" otherwise. The plain
    /// form rounds the scaled fraction, so it can differ from "%.15g" in the last digit.
    /// @param out_buffer  FLOAT_TEXT_SIZE bytes
    /// @return bytes written, without the NUL
    template <ConvertibleFloat T>
    static std::size_t ConvertFloatingPointToBuffer(T in_value, char* out_buffer);
    template <ConvertibleFloat T>
    static std::string ConvertFloatingPointToString(T in_value);
    template <ConvertibleFloat T>
    static orska_wstring ConvertFloatingPointToWString(T in_value);

    /// The same with exactly `in_decimals` decimals for magnitudes from 10^-in_decimals up to
    /// 2147483647 and for zero; "%e" otherwise.
    /// @param in_decimals  0 to 15; other values are clamped
    /// @param out_buffer  DECIMALS_TEXT_SIZE bytes
    /// @return bytes written, without the NUL
    static std::size_t ConvertDoubleToBufferFixed(double in_value, int in_decimals,
                                                  char* out_buffer);
    /// As above without trailing zeros, with "%.*g" and `in_decimals` as the fallback.
    static std::size_t ConvertDoubleToBufferTrimmed(double in_value, int in_decimals,
                                                    char* out_buffer);
};

}  // namespace Orska::Support

#endif
