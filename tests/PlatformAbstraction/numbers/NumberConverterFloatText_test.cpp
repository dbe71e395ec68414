#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>
#include <random>
#include <string>

#include "PlatformAbstraction/numbers/DoublePowersOfTen.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "tests/support/GuardedBuffer.h"

namespace Orska::Support {

namespace {

using Testing::GuardedBuffer;

constexpr std::size_t ROOM = 4096;  // bytes between the forbidden pages

std::string Print(double in_value, int in_decimals, bool in_isFixed) {
    char buffer[NumberConverter::DECIMALS_TEXT_SIZE];
    const auto print = in_isFixed ? NumberConverter::ConvertDoubleToBufferFixed
                                  : NumberConverter::ConvertDoubleToBufferTrimmed;
    const std::size_t length = print(in_value, in_decimals, buffer);
    EXPECT_EQ(buffer[length], '\0');
    return std::string(buffer, length);
}

std::string PrintFixed(double in_value, int in_decimals) {
    return Print(in_value, in_decimals, true);
}

/// The C library's text in the expected form: plain with this many digits after the point, without
/// trailing zeros if asked. Empty if the scaled fraction may be a tie, which our own rule rounds;
/// rows below test that rule.
std::string Expect(double in_value, int in_digits, int in_decimals, bool in_keepZeros) {
    const double magnitude = std::fabs(in_value);
    const bool isPlain =
        magnitude == 0 || (magnitude <= 2147483647.0 && magnitude >= GetPowerOfTen(-in_digits));
    const double rest = magnitude - std::floor(magnitude);
    const double power = GetPowerOfTen(in_decimals);
    const double scaled = std::floor(rest * power);
    const bool isExact = std::fma(rest, power, -(rest * power)) == 0;
    const bool isOwnTie = !isExact || scaled == 0 || scaled + 1 == power;
    const double fromTie = std::fabs(rest * power - scaled - 0.5);
    if (isPlain && in_decimals > 0 && isOwnTie && fromTie < (isExact ? 0.001 : 0.1)) return "";
    const int precision = isPlain ? in_decimals : in_keepZeros ? 6 : in_digits;
    char text[400];
    std::snprintf(text, sizeof(text),
                  isPlain        ? "%.*f"
                  : in_keepZeros ? "%.*e"
                                 : "%.*g",
                  precision,
                  in_value + 0.0);  // no zero has a sign
    std::string expected = text;
    if (isPlain && !in_keepZeros && in_decimals > 0) {
        expected.erase(expected.find_last_not_of('0') + 1);
        if (expected.back() == '.') expected.pop_back();
    }
    return expected;
}

/// Writes into exactly the promised room.
template <class T>
void CheckSignificant(GuardedBuffer& in_pages, T in_value) {
    const int digits = sizeof(T) == 4 ? 7 : 15;
    const auto whole = static_cast<std::int64_t>(std::min(std::fabs(double{in_value}), 1e18));
    const int count = whole == 0 ? 0 : static_cast<int>(std::to_string(whole).size());
    const std::string expected = Expect(in_value, digits, digits - std::min(digits, count), false);
    char* const buffer = in_pages.GetEnd() - NumberConverter::FLOAT_TEXT_SIZE;
    const std::size_t length = NumberConverter::ConvertFloatingPointToBuffer(in_value, buffer);
    ASSERT_EQ(buffer[length], '\0');
    ASSERT_EQ(std::string(buffer, length), expected.empty() ? buffer : expected);
}

void CheckAll(GuardedBuffer& in_pages, double in_value) {
    SCOPED_TRACE(in_value);
    for (const double value : {in_value, -in_value}) {
        ASSERT_NO_FATAL_FAILURE(CheckSignificant(in_pages, value));
        if (std::fabs(value) < 3e38) {
            ASSERT_NO_FATAL_FAILURE(CheckSignificant(in_pages, static_cast<float>(value)));
        }
        for (int decimals = 0; decimals <= 15; ++decimals) {
            for (const bool isFixed : {true, false}) {
                const std::string expected = Expect(value, decimals, decimals, isFixed);
                if (expected.empty()) continue;
                ASSERT_EQ(Print(value, decimals, isFixed), expected);
            }
        }
    }
}

TEST(FloatingPointToText, GivesTheDocumentedTexts) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        double m_value;
        const char* m_text;
    } CASES[] = {
        {0.0, "0"},
        {-0.0, "0"},
        {123.456, "123.456"},
        {1.7976931348623157e308, "1.79769313486232e+308"},
        {std::numeric_limits<double>::quiet_NaN(), "NaN"},
        {infinity, "INFINITY"},
        {-infinity, "-INFINITY"},
    };
    for (const auto& row : CASES) {
        EXPECT_EQ(NumberConverter::ConvertFloatingPointToString(row.m_value), row.m_text);
        EXPECT_EQ(NumberConverter::ConvertFloatingPointToWString(row.m_value).GetAsUtf8(),
                  row.m_text);
    }
    EXPECT_EQ(NumberConverter::ConvertFloatingPointToString(0.1f), "0.1");
    EXPECT_EQ(NumberConverter::ConvertFloatingPointToString(1234567.8f), "1234568");
    EXPECT_EQ(NumberConverter::ConvertFloatingPointToString(1e10f), "1e+10");
    EXPECT_EQ(NumberConverter::ConvertFloatingPointToWString(-1.5f).GetAsUtf8(), "-1.5");
}

TEST(FloatingPointToText, RoundsTiesAndCarriesAsDocumented) {
    EXPECT_EQ(PrintFixed(0.125, 2), "0.12");  // a tie to the even fraction
    EXPECT_EQ(PrintFixed(0.375, 2), "0.38");  // a tie to the even fraction, upwards
    EXPECT_EQ(PrintFixed(0.95, 1), "0.10");   // a tie: it does not carry, by design
    EXPECT_EQ(Print(0.9999999999999995, 15, false), "0.1");
    EXPECT_EQ(PrintFixed(0.0, 2), "0.00");
    EXPECT_EQ(PrintFixed(-0.0, 0), "0");
}

TEST(FloatingPointToText, FallsBackOutsideTheRange) {
    EXPECT_EQ(PrintFixed(std::numeric_limits<double>::infinity(), 2), "INFINITY");
    EXPECT_EQ(Print(std::numeric_limits<double>::quiet_NaN(), 2, false), "NaN");
    // Counts of decimals outside the range.
    EXPECT_EQ(PrintFixed(1.5, -1), PrintFixed(1.5, 0));
    EXPECT_EQ(PrintFixed(1.5, 16), PrintFixed(1.5, 15));
}

TEST(FloatingPointToText, FollowsTheRulesAroundTheLimits) {
    GuardedBuffer pages(ROOM);
    for (const double limit : {2147483647.0, 2147483646.5, 4294967296.0, 1e5, 1e6, 1e9, 1.0, 0.5}) {
        double value = limit;
        for (int step = 0; step < 4; ++step) {
            ASSERT_NO_FATAL_FAILURE(CheckAll(pages, value));
            value = std::nextafter(value, step < 2 ? 0.0 : 1e300);
        }
    }
    for (int exponent = -18; exponent <= 20; ++exponent) {
        const double power = GetPowerOfTen(exponent);
        for (const double value : {power, std::nextafter(power, 0.0), std::nextafter(power, 1e300),
                                   power * 9.5, power * 0.9999995, power * 0.99999999999999995}) {
            ASSERT_NO_FATAL_FAILURE(CheckAll(pages, value));
        }
    }
    for (const double value : {4.9e-324, 2.2250738585072014e-308, 1.7976931348623157e308}) {
        ASSERT_NO_FATAL_FAILURE(CheckAll(pages, value));
    }
}

TEST(FloatingPointToText, FollowsTheRulesOnRandomValues) {
    std::mt19937_64 random(5);
    GuardedBuffer pages(ROOM);
    for (unsigned round = 0; round < 12000; ++round) {
        const auto digits = static_cast<double>(random() >> random() % 64);
        // The last three are ties: a fraction that, scaled, ends in exactly one half, and decimal
        // fractions that rounding moves there.
        const auto odd = static_cast<double>(random() % 65536 * 2 + 1);
        const double values[] = {std::bit_cast<double>(random()),
                                 digits / std::pow(10.0, random() % 19),
                                 digits / 4294967296.0,
                                 std::ldexp(odd, -static_cast<int>(random() % 17 + 1)),
                                 odd * 5 / 1e6,
                                 1.0 - std::pow(10.0, -static_cast<int>(random() % 15)) * 0.5};
        const double value = values[round % std::size(values)];
        if (std::isfinite(value)) {
            ASSERT_NO_FATAL_FAILURE(CheckAll(pages, std::fabs(value)));
        }
    }
}

}  // namespace

}  // namespace Orska::Support
