#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/numbers/DoublePowersOfTen.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/NumberModel.h"

namespace Orska::Support {

namespace {

using Testing::GuardedBuffer;
using Testing::ModelDouble;

constexpr std::size_t ROOM = 4096;  // bytes between the forbidden pages

/// The bits, so that the zeros and the infinities are told apart; one value for all NaNs.
std::uint64_t GetBits(double in_value) {
    return std::isnan(in_value) ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(in_value);
}

template <class T>
ModelDouble Convert(const char* in_text, std::size_t in_length, bool in_strict) {
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

void Check(GuardedBuffer& in_pages, const std::string& in_text) {
    for (const bool isStrict : {false, true}) {
        SCOPED_TRACE(in_text + (isStrict ? " strict" : ""));
        const ModelDouble expected = Testing::ModelStringToDouble(in_text, isStrict);
        for (const char* text : {in_pages.PutAtEnd(in_text), in_pages.PutAtStart(in_text)}) {
            const ModelDouble result = Convert<double>(text, in_text.size(), isStrict);
            ASSERT_EQ(result.m_throws, expected.m_throws);
            const ModelDouble single = Convert<float>(text, in_text.size(), isStrict);
            ASSERT_EQ(single.m_throws, expected.m_throws);
            if (!expected.m_throws) {
                ASSERT_EQ(GetBits(result.m_value), GetBits(expected.m_value));
                ASSERT_EQ(GetBits(single.m_value), GetBits(static_cast<float>(expected.m_value)));
            }
        }
    }
}

TEST(DoublePowersOfTen, AreAsCloseAsADoubleComes) {
    for (int exponent = LEAST_POWER_OF_TEN; exponent <= GREATEST_POWER_OF_TEN; ++exponent) {
        ASSERT_EQ(GetPowerOfTen(exponent), Testing::ModelPowerOfTen(exponent)) << exponent;
    }
}

TEST(ConvertStringToFloatingPoint, GivesTheDocumentedResults) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        const char* m_text;
        bool m_isRefused;  // when strict
        double m_value;    // when not
    } CASES[] = {
        {"", false, 0.0},
        {" ", true, 0.0},
        {"1", false, 1.0},
        {"+1", false, 1.0},
        {"-1.5", false, -1.5},
        {" \t\x01 7", false, 7.0},
        {"7 ", true, 7.0},
        {"1.", false, 1.0},
        {".5", false, 0.5},
        {".", true, 0.0},
        {"-.", true, -0.0},
        {"-", true, -0.0},
        {"-0", false, -0.0},
        {"1e", true, 1.0},
        {"1e+", true, 1.0},
        {"1e+2", false, 100.0},
        {"1E-2", false, 0.01},
        {"e5", false, 0.0},
        {"1.e2", false, 100.0},
        {"1..2", true, 1.0},
        {"1,5", true, 1.0},
        {"0x10", true, 0.0},
        {"00012", false, 12.0},
        {"abc", true, 0.0},
        {"in", true, 0.0},
        {"-in", true, -0.0},
        {"inf", false, infinity},
        {"INF", false, infinity},
        {"-inf", false, -infinity},
        {"iNfIn", false, infinity},
        {"+inf", true, 0.0},
        {"infinity", false, infinity},
        {"-INFINITY", false, -infinity},
        {"infinitys", true, 0.0},
        {"-infinityx", true, -0.0},
        {" inf", true, 0.0},
        {"-nan", true, -0.0},
        {"nanx", true, 0.0},
        {"infx", true, 0.0},
        {"1e308", false, 1e308},
        {"1e309", false, infinity},
        {"1e3090", true, infinity},
        {"1e3089", false, infinity},
        {"1e-400", false, 0.0},
        {"1844674407370955161e-341", false, 1844674407370955161.0 * 1e-40 * 1e-301},
        {"1e0000000309", false, infinity},
        {"1.7976931348623157e308", false, 1.7976931348623157e308},
        {"4.9e-324", false, 4.9e-324},
        {"1.8e308", false, infinity},
        {"-1.7976931348623157e308", false, -1.7976931348623157e308},
    };
    GuardedBuffer pages(ROOM);
    for (const auto& row : CASES) {
        SCOPED_TRACE(row.m_text);
        const std::string text = row.m_text;
        EXPECT_EQ(Convert<double>(text.data(), text.size(), true).m_throws, row.m_isRefused);
        const ModelDouble loose = Convert<double>(text.data(), text.size(), false);
        EXPECT_FALSE(loose.m_throws);
        EXPECT_EQ(GetBits(loose.m_value), GetBits(row.m_value));
        Check(pages, text);
    }
    for (const char* text : {"nan", "NaN", "NAN"}) {
        EXPECT_TRUE(std::isnan(Convert<double>(text, 3, true).m_value)) << text;
        EXPECT_TRUE(std::isnan(Convert<float>(text, 3, true).m_value)) << text;
    }
}

TEST(ConvertStringToFloatingPoint, StopsAtAnEmbeddedNul) {
    GuardedBuffer pages(ROOM);
    Check(pages, std::string("12\0"
                             "34",
                             5));
    Check(pages, std::string("\0", 1));
    Check(pages, std::string("inf\0", 4));
    Check(pages, std::string("infinity\0", 9));
}

TEST(ConvertStringToFloatingPoint, ReadsAtMost1279Characters) {
    GuardedBuffer pages(ROOM);
    for (std::size_t length = 1275; length <= 1283; ++length) {
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::string(length, '1')));
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::string(length - 1, ' ') + "5"));
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::string("1.") + std::string(length - 2, '0')));
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::string(length - 3, '0') + "1e5"));
        const std::string text(length, '1');
        EXPECT_EQ(Convert<double>(text.data(), length, true).m_throws, length > 1279);
    }
    const std::string wide = std::string(1277, ' ') + "12345";
    EXPECT_EQ(NumberConverter::ConvertStringToFloatingPoint<double>(orska_wstring(wide), false),
              12);
}

TEST(ConvertStringToFloatingPoint, FollowsTheRulesAtTheEdges) {
    GuardedBuffer pages(ROOM);
    for (const int base : {-345, -344, -343, -325, -324, -323, -309, -308, -307, -306,
                           -290, -289, 287,  288,  289,  290,  307,  308,  309,  345}) {
        for (const char* mantissa :
             {"1", "9", "1.7976931348623157", "17976931348623157", "1.7976931348623158",
              "2.2250738585072014", "0.0001", "18446744073709551615",
              "123456789012345678901234567890", "0.00000000000000000001797693134862315",
              "4.9406564584124654"}) {
            ASSERT_NO_FATAL_FAILURE(
                Check(pages, std::string(mantissa) + "e" + std::to_string(base)));
        }
    }
    // About the greatest double, unit by unit, in the notations that scale by 288 to 308.
    for (std::uint64_t digits = 17976931348623100; digits < 17976931348623200; ++digits) {
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::to_string(digits) + "e292"));
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::to_string(digits) + "00e290"));
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::string("0.") + std::to_string(digits) + "e309"));
    }
    // About the bound of the mantissa, in 18 to 21 digits.
    for (const char* start : {"1844674407370955160", "1844674407370955161", "1844674407370955162",
                              "184467440737095516", "184467440737095515", "999999999999999999",
                              "9999999999999999999", "1000000000000000000"}) {
        for (const char* end : {"", "0", "5", "9", "99", ".5", ".99", "0.5", "5.5", "e3", "5e-3"}) {
            ASSERT_NO_FATAL_FAILURE(Check(pages, std::string(start) + end));
            ASSERT_NO_FATAL_FAILURE(Check(pages, std::string("0.000") + std::string(start) + end));
        }
    }
    for (const std::size_t zeros : {1, 7, 8, 9, 20, 300, 320, 340, 345, 400}) {
        ASSERT_NO_FATAL_FAILURE(
            Check(pages, std::string("0.") + std::string(zeros, '0') + "123456789012345"));
        ASSERT_NO_FATAL_FAILURE(
            Check(pages, std::string("123456789") + std::string(zeros, '0') + ".5"));
    }
}

TEST(ConvertStringToFloatingPoint, FollowsTheRulesOnRandomBits) {
    std::mt19937_64 random(2);
    GuardedBuffer pages(ROOM);
    for (int round = 0; round < 20000; ++round) {
        const auto value = std::bit_cast<double>(random());
        char text[64];
        const int length =
            std::snprintf(text, sizeof(text), "%.*g", static_cast<int>(random() % 20 + 1), value);
        ASSERT_NO_FATAL_FAILURE(Check(pages, std::string(text, static_cast<std::size_t>(length))));
    }
}

std::string MakeDigits(std::mt19937_64& inout_random, std::size_t in_most) {
    std::string digits(inout_random() % (in_most + 1), '0');
    for (char& digit : digits) digit = static_cast<char>('0' + inout_random() % 10);
    return digits;
}

TEST(ConvertStringToFloatingPoint, FollowsTheRulesOnRandomText) {
    std::mt19937_64 random(3);
    GuardedBuffer pages(ROOM);
    for (int round = 0; round < 20000; ++round) {
        std::string text = round % 4 == 0 ? "-" : "";
        text += MakeDigits(random, round % 7 == 0 ? 40 : 10);
        if (random() % 4 != 0)
            text.append(".").append(MakeDigits(random, round % 5 == 0 ? 40 : 12));
        if (random() % 3 == 0)
            text.append("e").append(std::to_string(static_cast<int>(random() % 700) - 350));
        // Some with a character that does not belong.
        if (round % 10 == 0)
            text.insert(random() % (text.size() + 1), 1, "+-.eE x\0 9"[random() % 10]);
        ASSERT_NO_FATAL_FAILURE(Check(pages, text));
    }
}

TEST(ConvertStringToFloatingPoint, TakesStrings) {
    EXPECT_EQ(NumberConverter::ConvertStringToFloatingPoint<double>(orska_wstring(u"-2.5"), true),
              -2.5);
    EXPECT_EQ(NumberConverter::ConvertStringToFloatingPoint<float>(orska_wstring(u"0.1"), true),
              0.1f);
    EXPECT_EQ(NumberConverter::ConvertStringToFloatingPoint<double>(orska_wstring(), true), 0.0);
    EXPECT_THROW(
        NumberConverter::ConvertStringToFloatingPoint<double>(orska_wstring(u"1\u00e9"), true),
        NumberConversionInvalidDataException);
}

}  // namespace

}  // namespace Orska::Support
