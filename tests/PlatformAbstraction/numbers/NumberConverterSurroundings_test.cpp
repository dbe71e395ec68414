/// Number conversion must not use the program's heap or depend on the locale.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "tests/support/RefusedMemory.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

namespace {

void* PlainMalloc(std::size_t in_size) { return std::malloc(in_size); }

}  // namespace

namespace Orska::Support {

namespace {

using Test::GERMAN;
using Test::SetLocale;
using Test::TemporaryDirectory;

TEST(NumberConverter, AllocatesNothing) {
    const std::string digits = "12";
    const std::string text = "  -123456789.123456789e12";
    const orska_wstring wide(u"42");
    const orska_wstring longWide(u"0000000000000000000000000000000000000042");
    s_memory.Start(SIZE_MAX, 0);
    char buffer[NumberConverter::DECIMALS_TEXT_SIZE];
    const auto convertIntegers = [&]<class T>(T in_value) {
        NumberConverter::StringToInteger<T>(digits.data(), digits.size(), true);
        NumberConverter::StringToInteger<T>(digits.c_str(), false);
        NumberConverter::StringToInteger<T>(wide, true);
        NumberConverter::StringToInteger<T>(longWide, true);
        NumberConverter::StringToIntegerUnchecked<T>(wide);
        NumberConverter::IntegerToBuffer(in_value, sizeof(buffer), buffer);
        NumberConverter::IntegerToBufferChecked(in_value, 21, buffer);
    };
    const auto convertTypes = [&]<class... Types>(Types...) { (convertIntegers(Types(-21)), ...); };
    convertTypes(std::int8_t{}, std::int16_t{}, std::int32_t{}, std::int64_t{});
    convertTypes(std::uint8_t{}, std::uint16_t{}, std::uint32_t{}, std::uint64_t{});
    NumberConverter::IntegerToBuffer(std::numeric_limits<std::int64_t>::min(), 21, buffer);
    NumberConverter::ConvertStringToFloatingPoint<double>(text.data(), text.size(), true);
    NumberConverter::ConvertStringToFloatingPoint<float>(longWide, true);
    for (const double value : {1.5, 1e300, 4.9e-324, -1.7976931348623157e308, 1e-10, 1e20, -0.0}) {
        NumberConverter::ConvertFloatingPointToBuffer(value, buffer);
        NumberConverter::ConvertFloatingPointToBuffer(static_cast<float>(value), buffer);
        NumberConverter::ConvertDoubleToBufferFixed(value, 15, buffer);
        NumberConverter::ConvertDoubleToBufferTrimmed(value, 15, buffer);
    }
    EXPECT_EQ(s_memory.m_count, 0u);
    // The counter does count.
    const std::vector<int> counted(1);
    EXPECT_EQ(s_memory.m_count, 1u);
}

TEST(NumberConverter, IgnoresTheLocale) {
    const TemporaryDirectory scratch;
    if (!SetLocale(GERMAN, scratch.GetPath())) GTEST_SKIP() << "this system lacks the locale";
    char comma[8];
    std::snprintf(comma, sizeof(comma), "%.1f", 1.5);
    ASSERT_STREQ(comma, "1,5");

    EXPECT_EQ(NumberConverter::ConvertStringToFloatingPoint<double>("1.5e1", 5, true), 15.0);
    EXPECT_EQ(NumberConverter::ConvertStringToFloatingPoint<double>("1,5", 3, false), 1.0);
    EXPECT_EQ(NumberConverter::ConvertFloatingPointToString(1.5), "1.5");
    EXPECT_EQ(NumberConverter::ConvertFloatingPointToString(1.5e300), "1.5e+300");
    EXPECT_EQ(NumberConverter::ConvertFloatingPointToString(1.5e-20f), "1.5e-20");
    char buffer[NumberConverter::DECIMALS_TEXT_SIZE];
    NumberConverter::ConvertDoubleToBufferFixed(1.5e300, 2, buffer);
    EXPECT_STREQ(buffer, "1.500000e+300");
    EXPECT_EQ(NumberConverter::IntegerToString(std::int32_t{1234567}), "1234567");
    EXPECT_EQ(NumberConverter::StringToInteger<std::int32_t>("1234567", true), 1234567);
    std::setlocale(LC_ALL, "C");
}

}  // namespace

}  // namespace Orska::Support
