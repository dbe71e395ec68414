/// What number conversion must not depend on or touch: the program's heap and the locale.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

namespace {

// Counts the allocations of this program.
std::size_t s_allocations = 0;

void* Allocate(std::size_t in_size) {
    ++s_allocations;
    if (void* const memory = std::malloc(in_size == 0 ? 1 : in_size)) return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t in_size) { return Allocate(in_size); }
void* operator new[](std::size_t in_size) { return Allocate(in_size); }
void operator delete(void* in_memory) noexcept { std::free(in_memory); }
void operator delete[](void* in_memory) noexcept { std::free(in_memory); }
void operator delete(void* in_memory, std::size_t) noexcept { std::free(in_memory); }
void operator delete[](void* in_memory, std::size_t) noexcept { std::free(in_memory); }

namespace Orska::Support {

namespace {

using Test::SetLocale;

TEST(NumberConverter, AllocatesNothing) {
    const std::string digits = "12";
    const std::string text = "  -123456789.123456789e12";
    const orska_wstring wide(u"42");
    const orska_wstring longWide(u"0000000000000000000000000000000000000042");
    const std::size_t before = s_allocations;
    char buffer[NumberConverter::DECIMALS_TEXT_SIZE];
    const auto convertIntegers = [&]<class T>(T in_value) {
        NumberConverter::StringToInteger<T>(digits.data(), digits.size(), true);
        NumberConverter::StringToInteger<T>(digits.c_str(), false);
        NumberConverter::StringToInteger<T>(wide, true);
        NumberConverter::StringToInteger<T>(longWide, true);
        NumberConverter::StringToIntegerUnchecked<T>(wide);
        NumberConverter::IntegerToBuffer(in_value, sizeof(buffer), buffer);
        NumberConverter::IntegerToBufferChecked(in_value, 6, buffer);
    };
    convertIntegers(std::int8_t{-128});
    convertIntegers(std::uint8_t{255});
    convertIntegers(std::int16_t{-3276});
    convertIntegers(std::uint16_t{65535});
    convertIntegers(std::int32_t{-2147});
    convertIntegers(std::uint32_t{42949});
    convertIntegers(std::int64_t{-9223});
    convertIntegers(std::uint64_t{18446});
    NumberConverter::IntegerToBuffer(std::numeric_limits<std::int64_t>::min(), 21, buffer);
    NumberConverter::ConvertStringToFloatingPoint<double>(text.data(), text.size(), true);
    NumberConverter::ConvertStringToFloatingPoint<float>(longWide, true);
    for (const double value : {1.5, 1e300, 4.9e-324, -1.7976931348623157e308, 1e-10, 1e20, -0.0}) {
        NumberConverter::ConvertFloatingPointToBuffer(value, buffer);
        NumberConverter::ConvertFloatingPointToBuffer(static_cast<float>(value), buffer);
        NumberConverter::ConvertDoubleToBufferFixed(value, 15, buffer);
        NumberConverter::ConvertDoubleToBufferTrimmed(value, 15, buffer);
    }
    EXPECT_EQ(s_allocations, before);
    // The counter does count.
    const std::vector<int> counted(1);
    EXPECT_EQ(s_allocations, before + 1);
}

/// A locale whose decimal point is a comma, as long as the object lives.
class CommaLocale {
public:
    CommaLocale() : m_isSet(SetLocale(Test::GERMAN, m_scratch.GetPath())) {}
    ~CommaLocale() { std::setlocale(LC_ALL, "C"); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    bool IsSet() const { return m_isSet; }

private:
    Test::TemporaryDirectory m_scratch;
    bool m_isSet;
};

TEST(NumberConverter, IgnoresTheLocale) {
    const CommaLocale locale;
    if (!locale.IsSet()) GTEST_SKIP() << "there is no such locale here";
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
}

}  // namespace

}  // namespace Orska::Support
