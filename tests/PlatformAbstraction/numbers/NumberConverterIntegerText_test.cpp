#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support {

namespace {

using Test::ThrownMessage;
using Testing::GuardedBuffer;

constexpr std::size_t ROOM = 4096;  // bytes between the forbidden pages

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
