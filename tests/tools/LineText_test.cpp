#include "tools/LineText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <string>

#include "tests/support/Reallocate_Fake.h"

namespace {

using Orska::LineText;
using Orska::Test::s_failReallocate;

std::string Text(const LineText& in_line) { return {in_line.GetData(), in_line.GetSize()}; }

void AppendFormatted(LineText& io_line, const char* in_format, ...) ORSKA_PRINTF_FORMAT(2, 3);
void AppendFormatted(LineText& io_line, const char* in_format, ...) {
    std::va_list arguments;
    va_start(arguments, in_format);
    io_line.AppendMessage(in_format, arguments);
    va_end(arguments);
}

/// Not a character on any system.
constexpr wchar_t s_noCharacter[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};

/// Null, which the compiler must not know.
const char* volatile s_null = nullptr;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-extra-args"
TEST(LineText, Messages) {
    const struct {
        const char* m_expected;
        void (*m_append)(LineText&);
    } rows[] = {
        {"", [](LineText& io_line) { AppendFormatted(io_line, "%s", ""); }},
        {"plain", [](LineText& io_line) { AppendFormatted(io_line, "plain"); }},
        {"a, -2147483648 and 4294967295: 100%",
         [](LineText& io_line) {
             AppendFormatted(io_line, "%s, %d and %u: 100%%", "a", INT_MIN, UINT_MAX);
         }},
        {"(null)", [](LineText& io_line) { AppendFormatted(io_line, "%s", s_null); }},
        {"size=5 allow=%",
         [](LineText& io_line) { AppendFormatted(io_line, "size=%u allow=%", 5u, 6u); }},
        {"%%", [](LineText& io_line) { AppendFormatted(io_line, "%%%"); }},
        // From here on the C library formats the whole text.
        {"text    7|ff|18446744073709551615",
         [](LineText& io_line) {
             AppendFormatted(io_line, "%s %4d|%x|%zu", "text", 7, 255, SIZE_MAX);
         }},
        {"1.50 abc wide",
         [](LineText& io_line) {
             AppendFormatted(io_line, "%.2f %.3s %ls", 1.5, "abcdef", L"wide");
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_expected);
        LineText line;
        line.Append("F:1\t");
        row.m_append(line);
        line.Append("|");
        line.End();
        EXPECT_EQ(Text(line), std::string("F:1\t") + row.m_expected + "|\n");
    }
}

TEST(LineText, AFormatThatTheCLibraryRefusesIsWrittenAsItIs) {
    if (std::snprintf(nullptr, 0, "%ls", s_noCharacter) >= 0) GTEST_SKIP() << "it refuses none";
    LineText line;
    AppendFormatted(line, "%s %ls refused", "a", s_noCharacter);
    line.End();
    EXPECT_EQ(Text(line), "%s %ls refused\n");
}
#pragma GCC diagnostic pop

/// Builds a prefix, a message and a tail, with a message from either formatter.
std::string Build(std::size_t in_size, bool in_isSimple) {
    const std::string text(in_size, 'x');
    LineText line;
    line.Append("prefix ");
    AppendFormatted(line, in_isSimple ? "%s" : "%.999999s", text.c_str());
    line.Append(" tail");
    line.End();
    return Text(line);
}

TEST(LineText, GrowsToEveryLength) {
    for (const bool isSimple : {true, false}) {
        for (const std::size_t size : {0u, 1u, 9320u, 9325u, 9326u, 9327u, 9985u, 9986u, 9987u,
                                       9991u, 9992u, 9993u, 9998u, 9999u, 10000u, 300000u}) {
            SCOPED_TRACE(testing::Message() << size << (isSimple ? " simple" : ""));
            EXPECT_TRUE(Build(size, isSimple) == "prefix " + std::string(size, 'x') + " tail\n");
        }
    }
}

TEST(LineText, IsTruncatedAndEndedWhenThereIsNoMemory) {
    s_failReallocate = true;
    for (const bool isSimple : {true, false}) {
        for (const std::size_t size : {9986u, 9987u, 9991u, 9992u, 9993u, 20000u}) {
            SCOPED_TRACE(testing::Message() << size << (isSimple ? " simple" : ""));
            const std::string line = Build(size, isSimple);
            const std::string whole = "prefix " + std::string(size, 'x') + " tail\n";
            EXPECT_LE(line.size(), 9999u);
            EXPECT_GE(line.size(), std::min<std::size_t>(whole.size(), 9998));
            EXPECT_EQ(line.back(), '\n');
            EXPECT_EQ(line.compare(0, 9990, whole, 0, 9990), 0);
        }
    }
    s_failReallocate = false;
}

}  // namespace
