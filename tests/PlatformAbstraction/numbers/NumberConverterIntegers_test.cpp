#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support {

namespace {

using Test::ThrownMessage;
using Testing::GuardedBuffer;

constexpr std::size_t ROOM = 4096;  // bytes between the forbidden pages

constexpr char INVALID[] = "StrToNumConvFailed";

/// The value as text, or the key of the exception, whose only parameter must be the input.
template <class Function>
std::string Convert(const Function& in_function, const std::string& in_input) {
    try {
        return std::to_string(in_function());
    } catch (const NumberConversionException& error) {
        const std::string key = error.GetMessageKeyOrText().GetAsUtf8();
        const bool isInvalid =
            dynamic_cast<const NumberConversionInvalidDataException*>(&error) != nullptr;
        EXPECT_EQ(isInvalid, key == INVALID);
        EXPECT_EQ(error.GetDiagState(), DIAG_GENERAL_ERROR);
        EXPECT_EQ(error.GetMessageParameters().size(), 1u);
        // Bytes that the ANSI encoding does not allow are replaced in the parameter.
        EXPECT_EQ(error.GetMessageParameters().at(0).GetAsUtf8(),
                  orska_wstring(in_input).GetAsUtf8());
        EXPECT_FALSE(error.GetMessageParameters().at(0).IsNull());
        return key;
    }
}

/// The expected result, by the C++ library's reading of the digits.
template <class T>
std::string Expect(const std::string& in_text, bool in_strict) {
    const bool isNegative = in_text.starts_with('-');
    const std::size_t sign = isNegative || in_text.starts_with('+') ? 1 : 0;
    const std::size_t end = std::min(in_text.find_first_not_of("0123456789", sign), in_text.size());
    if (in_text.empty() || (in_strict && (end < in_text.size() || end == sign))) return INVALID;
    if (isNegative && std::is_unsigned_v<T>) return "StrToNumConvFailedUnsigned";
    T value{};
    const auto result =
        std::from_chars(in_text.data() + (isNegative ? 0 : sign), in_text.data() + end, value);
    if (result.ec != std::errc::result_out_of_range) return std::to_string(value);
    return isNegative ? "StrToNumConvFailedUnderflow" : "StrToNumConvFailedOverflow";
}

/// Checks one type, in both forms, strict and not.
template <class T>
void Check(GuardedBuffer& in_pages, const std::string& in_text) {
    for (const bool isStrict : {false, true}) {
        SCOPED_TRACE("\"" + in_text + "\" bits " + std::to_string(sizeof(T) * 8) +
                     (std::is_signed_v<T> ? " signed" : " unsigned") + (isStrict ? " strict" : ""));
        for (const char* text : {in_pages.PutAtEnd(in_text), in_pages.PutAtStart(in_text)}) {
            const auto convert = [&] {
                return NumberConverter::StringToInteger<T>(text, in_text.size(), isStrict);
            };
            ASSERT_EQ(Convert(convert, in_text), Expect<T>(in_text, isStrict));
        }
        const char* const terminated = in_pages.PutAtEnd(in_text + '\0');
        const std::string seen = terminated;
        const auto convert = [&] {
            return NumberConverter::StringToInteger<T>(terminated, isStrict);
        };
        ASSERT_EQ(Convert(convert, seen),
                  seen.empty() && !isStrict ? "0" : Expect<T>(seen, isStrict));
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
    for (const char* text : {"", "-", "+", "--1", "+-1", "-+1", "-0", "+7", " 12", "12 ", "-007",
                             "99999999999999999999999x", "-99999999999999999999999x",
                             "-00000000000000000000000000000000000128"}) {
        ASSERT_NO_FATAL_FAILURE(CheckAllTypes(pages, text));
    }
    EXPECT_EQ(Convert([] { return NumberConverter::StringToInteger<int>(nullptr, 0, false); }, ""),
              INVALID);
}

TEST(StringToInteger, HoldsAroundLimitsAndPowersOfTen) {
    GuardedBuffer pages(ROOM);
    const auto check = [&pages](const std::string& in_digits) {
        for (const char* sign : {"", "-", "+"}) {
            CheckAllTypes(pages, sign + in_digits);
            CheckAllTypes(pages, sign + std::string(25 - in_digits.size(), '0') + in_digits);
        }
    };
    for (std::string limit : {"127", "255", "32767", "65535", "2147483647", "4294967295",
                              "9223372036854775807", "18446744073709551615"}) {
        for (limit.back() = '0'; limit.back() <= '9'; ++limit.back()) {
            ASSERT_NO_FATAL_FAILURE(check(limit));
        }
    }
    for (std::size_t zeros = 0; zeros <= 21; ++zeros) {
        ASSERT_NO_FATAL_FAILURE(check("1" + std::string(zeros, '0')));
        ASSERT_NO_FATAL_FAILURE(check(std::string(zeros + 1, '9')));
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
            // Any other byte at any place must be found.
            text[random() % length] = static_cast<char>(random());
            ASSERT_NO_FATAL_FAILURE(CheckAllTypes(pages, text));
        }
    }
}

TEST(StringToInteger, AcceptsStringsInTheAnsiEncoding) {
    const auto convert = []<class T>(const orska_wstring& in_text, T, bool in_strict) {
        return Convert([&] { return NumberConverter::StringToInteger<T>(in_text, in_strict); },
                       in_text.GetAsUtf8());
    };
    for (const bool isStrict : {false, true}) {
        for (const std::string& text : {std::string(), std::string("-7"), std::string("12\xc3\xa9"),
                                        std::string("70000"), std::string(600, '0') + "7"}) {
            SCOPED_TRACE(text);
            EXPECT_EQ(convert(text, std::int16_t{}, isStrict),
                      Expect<std::int16_t>(text, isStrict));
            EXPECT_EQ(convert(text, std::uint64_t{}, isStrict),
                      Expect<std::uint64_t>(text, isStrict));
        }
    }
    EXPECT_EQ(convert(orska_wstring(), std::int8_t{}, false), INVALID);
    SetAnsiEncoding(EncodingType::ENC_UTF16LE);  // "1" is then '1' and a zero byte
    const orska_wstring one(u"1");
    EXPECT_EQ(NumberConverter::StringToInteger<std::int32_t>(one, false), 1);
    EXPECT_THROW(NumberConverter::StringToInteger<std::int32_t>(one, true),
                 NumberConversionInvalidDataException);
    SetAnsiEncoding(EncodingType::ENC_UTF8);
}

TEST(StringToIntegerUnchecked, TreatsEveryUnitAsADigitAndWraps) {
    const auto parse = []<class T>(const char16_t* in_text, T) {
        return NumberConverter::StringToIntegerUnchecked<T>(orska_wstring(in_text));
    };
    EXPECT_EQ(parse(nullptr, 0), 0);
    EXPECT_EQ(parse(u"-", 0), 0);
    EXPECT_EQ(parse(u"+12", 0), 12);
    EXPECT_EQ(parse(u"1 2", 0), 100 - 16 * 10 + 2);
    EXPECT_EQ(parse(u"--1", 0), 3 * 10 - 1);
    EXPECT_EQ(parse(u"\u0430", 0), 0x430 - 0x30);
    EXPECT_EQ(parse(u"300", std::uint8_t{}), 44);
    EXPECT_EQ(parse(u"-1", std::uint16_t{}), 65535);
    EXPECT_EQ(parse(u"9223372036854775808", std::int64_t{}), INT64_MIN);
    EXPECT_EQ(parse(u"18446744073709551617", std::uint64_t{}), 1u);
}

using Refusal = NumberConversionInvalidDataException;

template <class T>
using Writer = char* (*)(T, std::uint16_t, char*);

/// Writes into buffers of every length, between bytes that cannot be touched.
template <class T>
void CheckEveryLength(GuardedBuffer& in_pages, T in_value) {
    const std::string expected = std::to_string(in_value);
    const bool isLeast =
        sizeof(T) == 8 && std::is_signed_v<T> && in_value == std::numeric_limits<T>::min();
    const std::string refusal =
        isLeast ? "StrToNumConvFailed(-9223372036854775808)" : "NumToStrConvFailed";
    for (Writer<T> writer :
         {&NumberConverter::IntegerToBuffer<T>, &NumberConverter::IntegerToBufferChecked<T>}) {
        for (std::uint16_t length = 0; length <= 24; ++length) {
            SCOPED_TRACE(expected + " in " + std::to_string(length));
            for (char* buffer : {in_pages.GetStart(), in_pages.GetEnd() - length}) {
                if (length <= expected.size()) {
                    ASSERT_EQ(ThrownMessage<Refusal>([&] { writer(in_value, length, buffer); }),
                              refusal);
                } else {
                    const char* const text = writer(in_value, length, buffer);
                    ASSERT_EQ(text, buffer + length - 1 - expected.size());
                    ASSERT_STREQ(text, expected.c_str());
                }
            }
        }
    }
}

template <class T>
void CheckType() {
    GuardedBuffer pages(ROOM);
    for (int step = 0; step <= 2; ++step) {
        CheckEveryLength<T>(pages, static_cast<T>(std::numeric_limits<T>::min() + step));
        CheckEveryLength<T>(pages, static_cast<T>(std::numeric_limits<T>::max() - step));
    }
    std::mt19937_64 random(sizeof(T));
    for (int round = 0; round < 300; ++round) {
        CheckEveryLength<T>(pages, static_cast<T>(random() >> random() % 64));
    }
    for (std::uint64_t power = 1, i = 0; i < 20; ++i, power *= 10) {
        if (power > static_cast<std::uint64_t>(std::numeric_limits<T>::max())) break;
        for (const int step : {-1, 0, 1}) {
            const auto value = static_cast<T>(power + static_cast<std::uint64_t>(step));
            CheckEveryLength<T>(pages, value);
            if (std::is_signed_v<T>) CheckEveryLength<T>(pages, static_cast<T>(0 - value));
        }
    }
}

template <class T>
void CheckStrings() {
    for (const T value : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T{0},
                          static_cast<T>(-1), T{10}}) {
        EXPECT_EQ(NumberConverter::IntegerToString(value), std::to_string(value));
        EXPECT_EQ(NumberConverter::IntegerToWString(value).GetAsUtf8(), std::to_string(value));
    }
}

template <class... Types>
void CheckTypes() {
    (CheckType<Types>(), ...);
    (CheckStrings<Types>(), ...);
}

TEST(IntegerToBuffer, HoldsAtEveryLengthForEveryType) {
    CheckTypes<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
               std::int64_t, std::uint64_t>();
}

TEST(CopyMinimumIntToBuffer, NeedsTwentyBytesAndWritesNoTerminator) {
    for (const std::uint16_t length : std::initializer_list<std::uint16_t>{20, 21, 30}) {
        std::string buffer(32, 'x');
        char* const text = NumberConverter::CopyMinimumIntToBuffer(length, buffer.data());
        EXPECT_EQ(text, buffer.data() + length - 20);
        EXPECT_EQ(buffer, std::string(length - 20u, 'x') + "-9223372036854775808" +
                              std::string(32u - length, 'x'));
    }
    for (const std::uint16_t length : std::initializer_list<std::uint16_t>{0, 1, 19}) {
        std::string buffer(32, 'x');
        EXPECT_EQ(ThrownMessage<Refusal>(
                      [&] { NumberConverter::CopyMinimumIntToBuffer(length, buffer.data()); }),
                  "StrToNumConvFailed(-9223372036854775808)");
        EXPECT_EQ(buffer, std::string(32, 'x'));
    }
}

}  // namespace

}  // namespace Orska::Support
