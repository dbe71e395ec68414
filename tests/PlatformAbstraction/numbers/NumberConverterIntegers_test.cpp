#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <type_traits>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/NumberModel.h"

namespace Orska::Support {

namespace {

using Testing::GuardedBuffer;
using Testing::ModelInteger;

constexpr std::size_t ROOM = 4096;  // bytes between the forbidden pages

/// What a conversion did, in the terms of the model; with its one parameter.
struct Result {
    ModelInteger m_outcome;
    std::string m_parameter;
};

template <class Function>
Result Convert(const Function& in_function) {
    try {
        return {{"", false, static_cast<std::uint64_t>(in_function())}, ""};
    } catch (const NumberConversionException& error) {
        EXPECT_EQ(error.GetMessageParameters().size(), 1u);
        const bool isOutOfRange =
            dynamic_cast<const NumberConversionOutOfRangeException*>(&error) != nullptr;
        EXPECT_NE(dynamic_cast<const NumberConversionInvalidDataException*>(&error) != nullptr,
                  isOutOfRange);
        EXPECT_EQ(error.GetDiagState(), DIAG_GENERAL_ERROR);
        return {{error.GetMessageKeyOrText().GetAsUtf8(), isOutOfRange, 0},
                error.GetMessageParameters().at(0).GetAsUtf8()};
    }
}

void ExpectSame(const Result& in_result, const ModelInteger& in_expected,
                const std::string& in_input) {
    ASSERT_EQ(in_result.m_outcome.m_key, in_expected.m_key);
    ASSERT_EQ(in_result.m_outcome.m_isOutOfRange, in_expected.m_isOutOfRange);
    ASSERT_EQ(in_result.m_outcome.m_bits, in_expected.m_bits);
    if (!in_expected.m_key.empty()) {
        // Bytes that the ANSI encoding does not allow are replaced in the parameter.
        ASSERT_EQ(in_result.m_parameter, orska_wstring(in_input).GetAsUtf8());
    }
}

/// Compares one type, in both forms, strict and not, with the model.
template <class T>
void Check(GuardedBuffer& in_pages, const std::string& in_text) {
    constexpr int BITS = sizeof(T) * 8;
    for (const bool isStrict : {false, true}) {
        SCOPED_TRACE("\"" + in_text + "\" bits " + std::to_string(BITS) +
                     (std::is_signed_v<T> ? " signed" : " unsigned") + (isStrict ? " strict" : ""));
        const ModelInteger expected =
            Testing::ModelStringToInteger(in_text, BITS, std::is_signed_v<T>, isStrict);
        for (const char* text : {in_pages.PutAtEnd(in_text), in_pages.PutAtStart(in_text)}) {
            ASSERT_NO_FATAL_FAILURE(ExpectSame(Convert([&] {
                                                   return NumberConverter::StringToInteger<T>(
                                                       text, in_text.size(), isStrict);
                                               }),
                                               expected, in_text));
        }
        const char* const terminated = in_pages.PutAtEnd(in_text + '\0');
        const std::string seen = terminated;
        ASSERT_NO_FATAL_FAILURE(ExpectSame(
            Convert([&] { return NumberConverter::StringToInteger<T>(terminated, isStrict); }),
            Testing::ModelStringToInteger(in_text, BITS, std::is_signed_v<T>, isStrict, true),
            seen));
    }
}

void CheckAllTypes(GuardedBuffer& in_pages, const std::string& in_text) {
    Check<std::int8_t>(in_pages, in_text);
    Check<std::uint8_t>(in_pages, in_text);
    Check<std::int16_t>(in_pages, in_text);
    Check<std::uint16_t>(in_pages, in_text);
    Check<std::int32_t>(in_pages, in_text);
    Check<std::uint32_t>(in_pages, in_text);
    Check<std::int64_t>(in_pages, in_text);
    Check<std::uint64_t>(in_pages, in_text);
}

TEST(StringToInteger, FollowsTheRulesOfOddText) {
    GuardedBuffer pages(ROOM);
    for (const char* text : {"",
                             "-",
                             "+",
                             "--1",
                             "+-1",
                             "-+1",
                             "0",
                             "-0",
                             "+0",
                             "+7",
                             "-7",
                             " 12",
                             "12 ",
                             "12a99999",
                             "a",
                             "-a",
                             "+a",
                             "-12x",
                             "0x10",
                             "1.5",
                             "1e3",
                             "007",
                             "-007",
                             "99999999999999999999999x",
                             "-99999999999999999999999x",
                             "12:",
                             "12/",
                             "1234567:",
                             "1234567/12345678",
                             "123456789012345:",
                             "1234567890123456789:",
                             ":234567890123456789",
                             "12\xb2\xb3",
                             "\xff",
                             "1\xc3\xa9",
                             "1\t",
                             "\n1",
                             "00000000000000000000000000000000000128",
                             "-00000000000000000000000000000000000128"}) {
        ASSERT_NO_FATAL_FAILURE(CheckAllTypes(pages, text));
    }
    ASSERT_NO_FATAL_FAILURE(CheckAllTypes(pages, std::string("12\0"
                                                             "34",
                                                             5)));
    ASSERT_NO_FATAL_FAILURE(CheckAllTypes(pages, std::string("\0", 1)));
}

TEST(StringToInteger, GivesTheDocumentedResults) {
    const auto parse16 = [](const char* text, bool isStrict) {
        return Convert(
            [&] { return NumberConverter::StringToInteger<std::int16_t>(text, isStrict); });
    };
    EXPECT_EQ(parse16("32767", true).m_outcome.m_bits, 32767u);
    EXPECT_EQ(parse16("32768", true).m_outcome.m_key, "StrToNumConvFailedOverflow");
    EXPECT_EQ(parse16("-32768", true).m_outcome.m_bits, static_cast<std::uint64_t>(-32768));
    EXPECT_EQ(parse16("-32769", true).m_outcome.m_key, "StrToNumConvFailedUnderflow");
    EXPECT_EQ(parse16("12a99999", false).m_outcome.m_bits, 12u);
    EXPECT_EQ(parse16("12 ", true).m_outcome.m_key, "StrToNumConvFailed");
    EXPECT_EQ(parse16("", false).m_outcome.m_key, "");
    EXPECT_EQ(parse16("", true).m_outcome.m_key, "StrToNumConvFailed");
    const auto empty = Convert(
        [] { return NumberConverter::StringToInteger<std::uint8_t>("", std::size_t{0}, false); });
    EXPECT_EQ(empty.m_outcome.m_key, "StrToNumConvFailed");
    EXPECT_EQ(Convert([] {
                  return NumberConverter::StringToInteger<std::uint8_t>("-0", false);
              }).m_outcome.m_key,
              "StrToNumConvFailedUnsigned");
}

TEST(StringToInteger, TellsEmptyInputFromNoInput) {
    try {
        NumberConverter::StringToInteger<std::int32_t>(nullptr, 0, false);
        FAIL() << "nothing thrown";
    } catch (const NumberConversionInvalidDataException& error) {
        ASSERT_EQ(error.GetMessageParameters().size(), 1u);
        EXPECT_FALSE(error.GetMessageParameters()[0].IsNull());
        EXPECT_TRUE(error.GetMessageParameters()[0].IsEmpty());
    }
}

TEST(StringToInteger, HoldsForEvery16BitValue) {
    for (int value = -32768; value <= 65535; ++value) {
        const std::string text = std::to_string(value);
        if (value <= 32767) {
            ASSERT_EQ(
                NumberConverter::StringToInteger<std::int16_t>(text.data(), text.size(), true),
                value);
        }
        if (value >= 0) {
            ASSERT_EQ(
                NumberConverter::StringToInteger<std::uint16_t>(text.data(), text.size(), true),
                value);
        }
    }
}

TEST(StringToInteger, HoldsAroundLimitsAndPowersOfTen) {
    __extension__ typedef __int128 Wide;
    GuardedBuffer pages(ROOM);
    const auto check = [&pages](Wide in_value) {
        const bool isNegative = in_value < 0;
        std::string text;
        for (Wide rest = isNegative ? -in_value : in_value; rest != 0 || text.empty(); rest /= 10) {
            text.insert(text.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
        }
        CheckAllTypes(pages, (isNegative ? "-" : "") + text);
        CheckAllTypes(pages, (isNegative ? "-" : "+") + std::string(25 - text.size(), '0') + text);
    };
    for (const int bits : {7, 8, 15, 16, 31, 32, 63, 64}) {
        for (int step = -3; step <= 2; ++step) {
            ASSERT_NO_FATAL_FAILURE(check((Wide{1} << bits) + step));
            ASSERT_NO_FATAL_FAILURE(check(-(Wide{1} << bits) + step + 1));
        }
    }
    Wide power = 1;
    for (int i = 0; i <= 21; ++i, power *= 10) {
        for (const int step : {-1, 0, 1}) {
            ASSERT_NO_FATAL_FAILURE(check(power + step));
            ASSERT_NO_FATAL_FAILURE(check(-power + step));
        }
    }
}

TEST(StringToInteger, HoldsForTextOf1To40Characters) {
    std::mt19937_64 random(1);
    GuardedBuffer pages(ROOM);
    for (std::size_t length = 1; length <= 40; ++length) {
        for (int round = 0; round < 30; ++round) {
            std::string text;
            while (text.size() < length) text.push_back(static_cast<char>('0' + random() % 10));
            if (round % 3 == 1) text[0] = "+-0"[random() % 3];
            if (round % 5 == 4) std::fill_n(text.begin(), random() % length, '0');
            ASSERT_NO_FATAL_FAILURE(CheckAllTypes(pages, text));
            // Any other byte at any place is to be seen.
            text[random() % length] = static_cast<char>(random());
            ASSERT_NO_FATAL_FAILURE(CheckAllTypes(pages, text));
        }
    }
}

TEST(StringToInteger, SeesEveryByteThatIsNoDigitAtEveryPlace) {
    for (std::size_t length = 1; length <= 20; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string text(length, '1');
                text[place] = static_cast<char>(byte);
                const ModelInteger expected = Testing::ModelStringToInteger(text, 64, false, false);
                ASSERT_NO_FATAL_FAILURE(
                    ExpectSame(Convert([&] {
                                   return NumberConverter::StringToInteger<std::uint64_t>(
                                       text.data(), length, false);
                               }),
                               expected, text))
                    << length << " " << place << " " << byte;
            }
        }
    }
}

template <class T>
void CheckStrings(const std::string& in_text, bool in_strict) {
    SCOPED_TRACE(in_text);
    ExpectSame(
        Convert(
            [&] { return NumberConverter::StringToInteger<T>(orska_wstring(in_text), in_strict); }),
        Testing::ModelStringToInteger(in_text, sizeof(T) * 8, std::is_signed_v<T>, in_strict),
        in_text);
}

TEST(StringToInteger, TakesStringsInTheAnsiEncoding) {
    for (const bool isStrict : {false, true}) {
        for (const std::string text :
             {"", "42", "-7", "12\xc3\xa9", "\xe2\x82\xac", "70000", "18446744073709551615"}) {
            CheckStrings<std::int16_t>(text, isStrict);
            CheckStrings<std::uint64_t>(text, isStrict);
        }
        CheckStrings<std::uint32_t>(std::string(600, '0') + "7", isStrict);
    }
    EXPECT_EQ(Convert([] {
                  return NumberConverter::StringToInteger<std::int8_t>(orska_wstring(), false);
              }).m_outcome.m_key,
              "StrToNumConvFailed");
    SetAnsiEncoding(EncodingType::ENC_UTF16LE);  // "1" is then '1' and a zero byte
    const orska_wstring one(u"1");
    EXPECT_EQ(NumberConverter::StringToInteger<std::int32_t>(one, false), 1);
    EXPECT_THROW(NumberConverter::StringToInteger<std::int32_t>(one, true),
                 NumberConversionInvalidDataException);
}

TEST(StringToIntegerUnchecked, TakesEveryUnitForADigit) {
    const auto parse = [](const char16_t* text) {
        return NumberConverter::StringToIntegerUnchecked<std::int32_t>(orska_wstring(text));
    };
    EXPECT_EQ(parse(u""), 0);
    EXPECT_EQ(parse(u"-"), 0);
    EXPECT_EQ(parse(u"+12"), 12);
    EXPECT_EQ(parse(u"-12"), -12);
    EXPECT_EQ(parse(u"1 2"), 100 - 16 * 10 + 2);
    EXPECT_EQ(parse(u"--1"), 3 * 10 - 1);
    EXPECT_EQ(parse(u"\u0430"), 0x430 - 0x30);
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::int32_t>(orska_wstring()), 0);
}

TEST(StringToIntegerUnchecked, WrapsInTheWidthOfTheType) {
    const orska_wstring large(u"300");
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::uint8_t>(large), 44);
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::int8_t>(large), 44);
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::int8_t>(orska_wstring(u"128")), -128);
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::uint16_t>(orska_wstring(u"-1")),
              65535);
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::int64_t>(
                  orska_wstring(u"-9223372036854775808")),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::int64_t>(
                  orska_wstring(u"9223372036854775808")),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(NumberConverter::StringToIntegerUnchecked<std::uint64_t>(
                  orska_wstring(u"18446744073709551617")),
              1u);
}

}  // namespace

}  // namespace Orska::Support
