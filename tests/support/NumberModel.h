/// A slow model of number conversion, written from its rules and nothing else, digit by digit. It
/// shares no code and no table with the converter, but the processor's multiplication.
#ifndef TESTS_SUPPORT_NUMBERMODEL_H
#define TESTS_SUPPORT_NUMBERMODEL_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace Orska::Support::Testing {

/// What an integer conversion is to do.
struct ModelInteger {
    std::string m_key;  ///< of the exception; empty when there is a value
    bool m_isOutOfRange = false;
    std::uint64_t m_bits = 0;  ///< the value modulo 2^64
};

/// @param in_isZeroTerminated  the form that takes a NUL-terminated string
ModelInteger ModelStringToInteger(const std::string& in_text, int in_bits, bool in_isSigned,
                                  bool in_strict, bool in_isZeroTerminated = false);

/// What a floating-point conversion is to do.
struct ModelDouble {
    bool m_throws = false;
    double m_value = 0;
};

ModelDouble ModelStringToDouble(const std::string& in_text, bool in_strict);

/// The text with significant digits (7 or 15).
std::string ModelSignificant(double in_value, int in_digits);
/// The text with a number of decimals, with all zeros or without trailing ones.
std::string ModelDecimals(double in_value, int in_decimals, bool in_keepZeros);

/// The double nearest to 10^in_exponent.
double ModelPowerOfTen(int in_exponent);

}  // namespace Orska::Support::Testing

#endif
