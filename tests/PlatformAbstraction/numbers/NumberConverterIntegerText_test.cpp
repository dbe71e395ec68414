#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "tests/support/GuardedBuffer.h"

namespace Orska::Support {

namespace {

using Testing::GuardedBuffer;

constexpr std::size_t ROOM = 4096;  // bytes between the forbidden pages

template <class T>
using Writer = char* (*)(T, std::uint16_t, char*);

template <class T>
std::string GetKeyOfThrow(Writer<T> in_writer, T in_value, std::uint16_t in_length,
                          char* out_text) {
    try {
        in_writer(in_value, in_length, out_text);
    } catch (const NumberConversionInvalidDataException& error) {
        const auto& parameters = error.GetMessageParameters();
        return error.GetMessageKeyOrText().GetAsUtf8() +
               (parameters.empty() ? "" : " " + parameters[0].GetAsUtf8());
    }
    return "";
}

/// Writes into buffers of every length, between bytes that cannot be touched.
template <class T>
void CheckEveryLength(GuardedBuffer& in_pages, T in_value) {
    const std::string expected = std::to_string(in_value);
    const bool isLeast =
        sizeof(T) == 8 && std::is_signed_v<T> && in_value == std::numeric_limits<T>::min();
    const std::string refusal =
        isLeast ? "StrToNumConvFailed -9223372036854775808" : "NumToStrConvFailed";
    for (Writer<T> writer :
         {&NumberConverter::IntegerToBuffer<T>, &NumberConverter::IntegerToBufferChecked<T>}) {
        for (std::uint16_t length = 0; length <= 24; ++length) {
            SCOPED_TRACE(expected + " in " + std::to_string(length));
            for (char* buffer : {in_pages.GetStart(), in_pages.GetEnd() - length}) {
                if (length <= expected.size()) {
                    ASSERT_EQ(GetKeyOfThrow(writer, in_value, length, buffer), refusal);
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
    for (std::uint64_t power = 1, i = 0; i < 20; ++i, power *= 10) {
        if (power > static_cast<std::uint64_t>(std::numeric_limits<T>::max())) break;
        for (const int step : {-1, 0, 1}) {
            const auto value = static_cast<T>(power + static_cast<std::uint64_t>(step));
            CheckEveryLength<T>(pages, value);
            if (std::is_signed_v<T>) CheckEveryLength<T>(pages, static_cast<T>(0 - value));
        }
    }
}

TEST(IntegerToBuffer, HoldsAtEveryLengthForEveryType) {
    CheckType<std::int8_t>();
    CheckType<std::uint8_t>();
    CheckType<std::int16_t>();
    CheckType<std::uint16_t>();
    CheckType<std::int32_t>();
    CheckType<std::uint32_t>();
    CheckType<std::int64_t>();
    CheckType<std::uint64_t>();
}

TEST(IntegerToBuffer, HoldsForEvery16BitValue) {
    for (int value = -32768; value <= 65535; ++value) {
        const std::string expected = std::to_string(value);
        char buffer[7];
        if (value <= 32767) {
            ASSERT_EQ(NumberConverter::IntegerToBuffer(static_cast<std::int16_t>(value), 7, buffer),
                      expected);
        }
        if (value >= 0) {
            ASSERT_EQ(NumberConverter::IntegerToBufferChecked(static_cast<std::uint16_t>(value), 6,
                                                              buffer),
                      expected);
        }
    }
}

template <class T>
void CheckRoundTrips() {
    std::mt19937_64 random(sizeof(T));
    for (int round = 0; round < 20000; ++round) {
        const auto value = static_cast<T>(random() >> random() % 64);
        char buffer[NumberConverter::INTEGER_TEXT_SIZE];
        const char* const text = NumberConverter::IntegerToBuffer(value, sizeof(buffer), buffer);
        ASSERT_EQ(text, std::to_string(value));
        ASSERT_EQ(NumberConverter::StringToInteger<T>(text, true), value);
    }
}

TEST(IntegerToBuffer, RoundTripsRandomValues) {
    CheckRoundTrips<std::int32_t>();
    CheckRoundTrips<std::uint32_t>();
    CheckRoundTrips<std::int64_t>();
    CheckRoundTrips<std::uint64_t>();
}

TEST(IntegerToBuffer, WorksInTheLongestBuffer) {
    std::string buffer(65535, 'x');
    const char* const text =
        NumberConverter::IntegerToBuffer(std::int32_t{-40}, 65535, buffer.data());
    EXPECT_EQ(text, buffer.data() + 65531);
    EXPECT_STREQ(text, "-40");
    EXPECT_TRUE(std::all_of(buffer.data(), buffer.data() + 65535 - 12,
                            [](char character) { return character == 'x'; }));
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
        try {
            NumberConverter::CopyMinimumIntToBuffer(length, buffer.data());
            FAIL() << "nothing thrown";
        } catch (const NumberConversionInvalidDataException& error) {
            EXPECT_EQ(error.GetMessageKeyOrText().GetAsUtf8(), "StrToNumConvFailed");
            ASSERT_EQ(error.GetMessageParameters().size(), 1u);
            EXPECT_EQ(error.GetMessageParameters()[0].GetAsUtf8(), "-9223372036854775808");
        }
        EXPECT_EQ(buffer, std::string(32, 'x'));
    }
}

template <class T>
void CheckStrings() {
    for (const T value : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T{0}, T{1},
                          static_cast<T>(-1), T{10}}) {
        EXPECT_EQ(NumberConverter::IntegerToString(value), std::to_string(value));
        EXPECT_EQ(NumberConverter::IntegerToWString(value).GetAsUtf8(), std::to_string(value));
    }
}

TEST(IntegerToString, HoldsTheLimitsOfEveryType) {
    CheckStrings<std::int8_t>();
    CheckStrings<std::uint8_t>();
    CheckStrings<std::int16_t>();
    CheckStrings<std::uint16_t>();
    CheckStrings<std::int32_t>();
    CheckStrings<std::uint32_t>();
    CheckStrings<std::int64_t>();
    CheckStrings<std::uint64_t>();
}

}  // namespace

}  // namespace Orska::Support
