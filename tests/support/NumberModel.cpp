#include "tests/support/NumberModel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace Orska::Support::Testing {

namespace {

__extension__ typedef __int128 SignedWide;

bool IsDigit(char in_character) { return in_character >= '0' && in_character <= '9'; }

/// The text of a floating-point number, read position by position.
struct Reader {
    std::string m_text;  // ends in a zero byte, as the local buffer does
    std::size_t m_at = 0;
    std::uint64_t m_mantissa = 0;
    int m_exponent = 0;

    char Now() const { return m_text[m_at]; }

    void ReadMantissa() {
        constexpr std::uint64_t BOUND = 1844674407370955161ULL;
        while (Now() == '0') ++m_at;
        for (; IsDigit(Now()) && m_mantissa < BOUND; ++m_at) {
            m_mantissa = m_mantissa * 10 + static_cast<std::uint64_t>(Now() - '0');
        }
        bool isSkipped = false;
        for (; IsDigit(Now()); ++m_at) {
            isSkipped = true;
            ++m_exponent;
        }
        if (Now() != '.') return;
        ++m_at;
        for (; !isSkipped && IsDigit(Now()) && m_mantissa < BOUND; ++m_at) {
            m_mantissa = m_mantissa * 10 + static_cast<std::uint64_t>(Now() - '0');
            --m_exponent;
        }
        while (IsDigit(Now())) ++m_at;
    }

    void ReadExponent() {
        if (Now() != 'e' && Now() != 'E') return;
        ++m_at;
        const bool isNegative = Now() == '-';
        if (Now() == '-' || Now() == '+') ++m_at;
        int exponent = 0;
        for (; IsDigit(Now()) && exponent < 309; ++m_at) {
            exponent = exponent * 10 + (Now() - '0');
        }
        m_exponent += isNegative ? -exponent : exponent;
    }

    double Scale() const {
        constexpr double GREATEST = std::numeric_limits<double>::max();
        const auto value = static_cast<double>(m_mantissa);
        const int e = m_exponent;
        if (e == 0 || m_mantissa == 0) return value;
        if (e < -344) return 0.0;
        if (e < -307) {
            return value * ModelPowerOfTen(-40) * ModelPowerOfTen(e + 40);
        }
        if (e >= 309) return std::numeric_limits<double>::infinity();
        const double product = value * ModelPowerOfTen(e);
        if (e < 288 || product <= GREATEST) return product;
        // A relative 2^-52 of this number is between one and two of its units in the last place.
        const auto near = std::bit_cast<std::int64_t>(1.7976931348623155e288);
        const auto less = std::bit_cast<std::int64_t>(value * ModelPowerOfTen(e - 20));
        return less >= near - 1 && less <= near + 1 ? GREATEST : product;
    }
};

/// @return how much was used, or -1
long ParseDouble(const std::string& in_text, double& out_value) {
    Reader reader;
    reader.m_text = in_text.substr(0, 1279);
    reader.m_text.push_back('\0');
    while (reader.Now() >= 1 && reader.Now() <= 32) ++reader.m_at;
    const bool isNegative = reader.Now() == '-';
    if (reader.Now() == '-' || reader.Now() == '+') ++reader.m_at;
    reader.ReadMantissa();
    reader.ReadExponent();
    const double magnitude = reader.Scale();
    out_value = isNegative ? -magnitude : magnitude;
    std::string used = reader.m_text.substr(0, reader.m_at);
    if (!used.empty() && used.back() == '.') used.pop_back();
    return !used.empty() && IsDigit(used.back()) ? static_cast<long>(reader.m_at) : -1;
}

std::string ToUpper(std::string in_text) {
    for (char& character : in_text) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 32);
    }
    return in_text;
}

std::string Print(const char* in_format, int in_precision, double in_value) {
    char text[64];
    if (in_format[1] == '.') {
        std::snprintf(text, sizeof(text), "%.*g", in_precision, in_value);
    } else {
        std::snprintf(text, sizeof(text), "%e", in_value);
    }
    return text;
}

/// The plain form: built backwards, then turned round.
std::string PrintPlain(double in_value, int in_decimals, bool in_keepZeros) {
    double wholePart = 0;
    const double rest = std::modf(std::fabs(in_value), &wholePart);
    auto whole = static_cast<std::uint64_t>(wholePart);
    std::uint64_t power = 1;
    for (int i = 0; i < in_decimals; ++i) power *= 10;
    double fractionPart = 0;
    const double last = std::modf(rest * static_cast<double>(power), &fractionPart);
    auto fraction = static_cast<std::uint64_t>(fractionPart);
    const bool isAbove = last > 0.5;
    const bool isTie = last == 0.5;
    if (in_decimals == 0) {
        whole += isAbove || (isTie && whole % 2 == 1) ? 1 : 0;
        fraction = 0;
    } else if (isAbove) {
        if (++fraction >= power) {
            fraction = 0;
            ++whole;
        }
    } else if (isTie && (fraction == 0 || fraction % 2 == 1)) {
        ++fraction;
    }
    std::string text;
    int places = in_decimals;
    if (!in_keepZeros) {
        for (; fraction != 0 && fraction % 10 == 0; fraction /= 10) --places;
    }
    if (fraction != 0 || (in_keepZeros && in_decimals > 0)) {
        for (; fraction != 0 || places > 0; fraction /= 10, --places) {
            text.push_back(static_cast<char>('0' + fraction % 10));
        }
        text.push_back('.');
    }
    do {
        text.push_back(static_cast<char>('0' + whole % 10));
        whole /= 10;
    } while (whole != 0);
    if (in_value < 0) text.push_back('-');
    std::reverse(text.begin(), text.end());
    return text;
}

bool IsPlain(double in_value, int in_digits) {
    const double magnitude = std::fabs(in_value);
    return magnitude == 0 ||
           (magnitude <= 2147483647.0 && magnitude >= ModelPowerOfTen(-in_digits));
}

std::string PrintSpecial(double in_value) {
    return std::isnan(in_value) ? "NaN" : in_value > 0 ? "INFINITY" : "-INFINITY";
}

}  // namespace

double ModelPowerOfTen(int in_exponent) {
    return std::strtod(("1e" + std::to_string(in_exponent)).c_str(), nullptr);
}

ModelInteger ModelStringToInteger(const std::string& in_text, int in_bits, bool in_isSigned,
                                  bool in_strict, bool in_isZeroTerminated) {
    const ModelInteger invalid{"StrToNumConvFailed", false, 0};
    const std::string text = in_isZeroTerminated ? in_text.substr(0, in_text.find('\0')) : in_text;
    if (text.empty()) return in_isZeroTerminated && !in_strict ? ModelInteger{} : invalid;
    const bool isNegative = text[0] == '-';
    const bool hasSign = isNegative || text[0] == '+';
    if (in_strict && hasSign && text.size() == 1) return invalid;
    const SignedWide max = (SignedWide{1} << (in_isSigned ? in_bits - 1 : in_bits)) - 1;
    const SignedWide min = in_isSigned ? -max - 1 : 0;
    SignedWide value = 0;
    bool isOver = false;
    bool isUnder = false;
    for (std::size_t i = hasSign ? 1 : 0; i < text.size(); ++i) {
        if (!IsDigit(text[i])) {
            if (in_strict) return invalid;
            break;
        }
        const int digit = text[i] - '0';
        if (isNegative && in_isSigned) {
            isUnder = isUnder || value < min / 10 || value * 10 - digit < min;
            value = isUnder ? value : value * 10 - digit;
        } else {
            isOver = isOver || value > max / 10 || value * 10 + digit > max;
            value = isOver ? value : value * 10 + digit;
        }
    }
    if (isNegative && !in_isSigned) return {"StrToNumConvFailedUnsigned", true, 0};
    if (isOver) return {"StrToNumConvFailedOverflow", true, 0};
    if (isUnder) return {"StrToNumConvFailedUnderflow", true, 0};
    return {"", false, static_cast<std::uint64_t>(value)};
}

ModelDouble ModelStringToDouble(const std::string& in_text, bool in_strict) {
    if (in_text.empty()) return {};
    const std::string upper = ToUpper(in_text);
    const char letter = upper[upper[0] == '-' && upper.size() > 1 ? 1 : 0];
    if (upper.size() >= 3 && upper.size() <= 9 && (letter == 'I' || letter == 'N')) {
        const double infinity = std::numeric_limits<double>::infinity();
        if (std::string("INFINITY").starts_with(upper)) return {false, infinity};
        if (upper.size() > 3 && std::string("-INFINITY").starts_with(upper)) {
            return {false, -infinity};
        }
        if (upper == "NAN") return {false, std::numeric_limits<double>::quiet_NaN()};
    }
    ModelDouble result;
    const long used = ParseDouble(in_text, result.m_value);
    result.m_throws = in_strict && used != static_cast<long>(in_text.size());
    return result;
}

std::string ModelSignificant(double in_value, int in_digits) {
    if (!std::isfinite(in_value)) return PrintSpecial(in_value);
    if (!IsPlain(in_value, in_digits)) return Print("%.*g", in_digits, in_value);
    const auto whole = static_cast<std::uint64_t>(std::fabs(in_value));
    const int count = whole == 0 ? 0 : static_cast<int>(std::to_string(whole).size());
    return PrintPlain(in_value, in_digits - std::min(in_digits, count), false);
}

std::string ModelDecimals(double in_value, int in_decimals, bool in_keepZeros) {
    if (!std::isfinite(in_value)) return PrintSpecial(in_value);
    if (IsPlain(in_value, in_decimals)) return PrintPlain(in_value, in_decimals, in_keepZeros);
    return Print(in_keepZeros ? "%e" : "%.*g", in_decimals, in_value);
}

}  // namespace Orska::Support::Testing
