#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/numbers/DoublePowersOfTen.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "tests/support/GuardedBuffer.h"

namespace Orska::Support {

namespace {

using Testing::GuardedBuffer;

constexpr std::size_t ROOM = 4096;  // bytes between the forbidden pages

/// The bits, to tell the zeros and the infinities apart; one value for all NaNs.
std::uint64_t GetBits(double in_value) {
    return std::isnan(in_value) ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(in_value);
}

struct Outcome {
    bool m_isRefused = false;
    double m_value = 0;
};

template <class T>
Outcome Convert(const char* in_text, std::size_t in_length, bool in_strict) {
    try {
        return {false,
                NumberConverter::ConvertStringToFloatingPoint<T>(in_text, in_length, in_strict)};
    } catch (const NumberConversionInvalidDataException& error) {
        EXPECT_EQ(error.GetMessageKeyOrText().GetAsUtf8(), "StrToNumConvFailed");
        EXPECT_EQ(error.GetMessageParameters().size(), 1u);
        EXPECT_EQ(error.GetMessageParameters().at(0),
                  orska_wstring(std::string(in_text, in_length)));
        return {true, 0};
    }
}

/// Converts at both ends of a block between forbidden pages, and to a float too.
Outcome Convert(GuardedBuffer& in_pages, const std::string& in_text, bool in_strict) {
    const Outcome outcome =
        Convert<double>(in_pages.PutAtStart(in_text), in_text.size(), in_strict);
    const char* const atEnd = in_pages.PutAtEnd(in_text);
    const Outcome again = Convert<double>(atEnd, in_text.size(), in_strict);
    EXPECT_EQ(again.m_isRefused, outcome.m_isRefused);
    EXPECT_EQ(GetBits(again.m_value), GetBits(outcome.m_value));
    const Outcome single = Convert<float>(atEnd, in_text.size(), in_strict);
    EXPECT_EQ(single.m_isRefused, outcome.m_isRefused);
    EXPECT_EQ(GetBits(single.m_value), GetBits(static_cast<float>(outcome.m_value)));
    return outcome;
}

/// Long text is read without the quick ways and has the same value. The C library's value is nearly
/// the same: a number is its digits times one power of ten.
void Check(GuardedBuffer& in_pages, const std::string& in_text) {
    SCOPED_TRACE(in_text);
    for (const bool isStrict : {true, false}) {
        const Outcome outcome = Convert(in_pages, in_text, isStrict);
        const Outcome slow = Convert(in_pages, std::string(20, ' ') + in_text, isStrict);
        ASSERT_EQ(outcome.m_isRefused, slow.m_isRefused);
        ASSERT_EQ(GetBits(outcome.m_value), GetBits(slow.m_value));
        if (outcome.m_isRefused || !isStrict) continue;
        const double nearest = std::strtod(in_text.c_str(), nullptr);
        if (std::fabs(nearest) < 1.79769313486231e308) {
            ASSERT_NEAR(outcome.m_value, nearest, std::fabs(nearest) * 1e-15 + 1e-321);
        }
    }
}

TEST(DoublePowersOfTen, AreAsCloseAsADoubleComes) {
    for (int exponent = LEAST_POWER_OF_TEN; exponent <= GREATEST_POWER_OF_TEN; ++exponent) {
        const std::string text = "1e" + std::to_string(exponent);
        ASSERT_EQ(GetPowerOfTen(exponent), std::strtod(text.c_str(), nullptr)) << exponent;
    }
}

TEST(ConvertStringToFloatingPoint, GivesTheDocumentedResults) {
    const double infinity = std::numeric_limits<double>::infinity();
    using namespace std::string_literals;
    const double greatest = std::numeric_limits<double>::max();
    const std::pair<std::string, double> accepted[] = {
        {"", 0.0},
        {"+1", 1.0},
        {" \t\x01 7", 7.0},
        {"1.", 1.0},
        {".5", 0.5},
        {"-0", -0.0},
        {"1e+2", 100.0},
        {"1E-2", 0.01},
        {"e5", 0.0},
        {"1.e2", 100.0},
        {"1e-400", 0.0},
        {"1e308", 1e308},
        {"1e288", 1e288},
        {"9e-345", 0.0},
        {"4.9e-324", 4.9e-324},
        {"-inf", -infinity},
        {"-INFINITY", -infinity},
    };
    // Of these the value is computed with less than all digits, or in two steps.
    const std::pair<std::string, double> rounded[] = {
        {"18446744073709551619", 18446744073709551610.0},
        {"123456789012345678901.5", 12345678901234567890.0 * 10},
        {"1844674407370955161e-341", 1844674407370955161.0 * 1e-40 * 1e-301},
        // A value that becomes infinity and is near the greatest double is that double.
        {"-1.7976931348623157e308", -greatest},
        {"17976931348623158e292", greatest},
        {"0.17976931348623158e309", greatest},
    };
    const std::pair<std::string, double> refused[] = {
        {" ", 0.0},           {"7 ", 7.0},      {".", 0.0},         {"-.", -0.0},
        {"-", -0.0},          {"1e", 1.0},      {"1e+", 1.0},       {"1..2", 1.0},
        {"1,5", 1.0},         {"0x10", 0.0},    {"abc", 0.0},       {"in", 0.0},
        {"-in", -0.0},        {"+inf", 0.0},    {"infinitys", 0.0}, {"-infinityx", -0.0},
        {" inf", 0.0},        {"-nan", -0.0},   {"nanx", 0.0},      {"infx", 0.0},
        {"1e3090", infinity}, {"12\0x"s, 12.0}, {"\0"s, 0.0},       {"inf\0"s, 0.0},
        {"infinity\0"s, 0.0},
    };
    GuardedBuffer pages(ROOM);
    const auto check = [&](const auto& in_row, bool in_isRefused) {
        const auto& [text, value] = in_row;
        SCOPED_TRACE(text);
        EXPECT_EQ(Convert(pages, text, true).m_isRefused, in_isRefused);
        const Outcome loose = Convert(pages, text, false);
        EXPECT_FALSE(loose.m_isRefused);
        EXPECT_EQ(GetBits(loose.m_value), GetBits(value));
    };
    for (const auto& row : accepted) check(row, false);
    for (const auto& row : rounded) check(row, false);
    for (const char* text : {"inf", "INF", "iNfIn", "infinity", "1e309", "1e3089", "1e0000000309",
                             "1.8e308", "17976931348623159e292"}) {
        check(std::pair<std::string, double>(text, infinity), false);
    }
    for (const auto& row : refused) check(row, true);
    for (const char* text : {"nan", "NaN", "NAN"}) {
        EXPECT_TRUE(std::isnan(Convert<double>(text, 3, true).m_value)) << text;
        EXPECT_TRUE(std::isnan(Convert<float>(text, 3, true).m_value)) << text;
    }
}

TEST(ConvertStringToFloatingPoint, ReadsAtMost1279Characters) {
    GuardedBuffer pages(ROOM);
    for (std::size_t length = 1278; length <= 1281; ++length) {
        SCOPED_TRACE(length);
        const bool isCut = length > 1279;
        EXPECT_EQ(Convert(pages, std::string(length, '1'), true).m_isRefused, isCut);
        EXPECT_EQ(Convert(pages, std::string(length - 2, ' ') + "12", false).m_value,
                  !isCut           ? 12
                  : length == 1280 ? 1
                                   : 0);
        EXPECT_EQ(Convert(pages, std::string(length - 3, '0') + "1e5", false).m_value,
                  isCut ? 1 : 1e5);
    }
    const std::string wide = std::string(1277, ' ') + "12345";
    EXPECT_EQ(NumberConverter::ConvertStringToFloatingPoint<double>(orska_wstring(wide), false),
              12);
}

std::string MakeDigits(std::mt19937_64& io_random, std::size_t in_most) {
    std::string digits(io_random() % (in_most + 1), '0');
    for (char& digit : digits) digit = static_cast<char>('0' + io_random() % 10);
    return digits;
}

TEST(ConvertStringToFloatingPoint, FollowsTheRulesOnRandomText) {
    // Around the bound of the mantissa, in 18 and 19 digits.
    constexpr const char* EDGES[] = {
        "184467440737095516",  "184467440737095515", "1844674407370955160", "1844674407370955161",
        "1844674407370955162", "999999999999999999", "9999999999999999999", "1000000000000000000"};
    std::mt19937_64 random(3);
    GuardedBuffer pages(ROOM);
    for (int round = 0; round < 20000; ++round) {
        std::string text = round % 4 == 0 ? "-" : "";
        if (round % 13 == 0) text += "0." + std::string(random() % 400, '0');
        if (round % 3 == 0) text += EDGES[random() % std::size(EDGES)];
        text += MakeDigits(random, round % 7 == 0 ? 40 : round % 3 == 0 ? 2 : 10);
        if (round % 17 == 0) text.append(random() % 400, '0');
        if (round % 13 != 0 && random() % 4 != 0) {
            text.append(".").append(MakeDigits(random, round % 5 == 0 ? 40 : 12));
        }
        if (random() % 3 == 0) {
            text.append("e").append(std::to_string(static_cast<int>(random() % 700) - 350));
        }
        // Some have a character that does not belong.
        if (round % 10 == 0) {
            text.insert(random() % (text.size() + 1), 1, "+-.eE x\0 9"[random() % 10]);
        }
        if (text.empty()) continue;  // "" is 0, but blanks alone are invalid
        ASSERT_NO_FATAL_FAILURE(Check(pages, text));
    }
}

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

TEST(FloatingPointToText, FollowsTheRulesOnRandomValues) {
    constexpr double LIMITS[] = {2147483647.0,
                                 2147483646.5,
                                 4294967296.0,
                                 1.0,
                                 0.5,
                                 4.9e-324,
                                 2.2250738585072014e-308,
                                 1.7976931348623157e308};
    constexpr double FACTORS[] = {1.0, 9.5, 0.9999995, 0.99999999999999995};
    std::mt19937_64 random(5);
    GuardedBuffer pages(ROOM);
    for (unsigned round = 0; round < 15000; ++round) {
        const auto digits = static_cast<double>(random() >> random() % 64);
        // The last three are ties: a fraction that, scaled, ends in exactly one half, and decimal
        // fractions that rounding moves there.
        const auto odd = static_cast<double>(random() % 65536 * 2 + 1);
        const double limit = LIMITS[random() % std::size(LIMITS)];
        const double power = GetPowerOfTen(static_cast<int>(random() % 39) - 18);
        const double values[] = {limit,
                                 std::nextafter(limit, random() % 2 == 0 ? 0.0 : 1e300),
                                 std::nextafter(power, random() % 2 == 0 ? 0.0 : 1e300),
                                 power * FACTORS[random() % std::size(FACTORS)],
                                 std::bit_cast<double>(random()),
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
