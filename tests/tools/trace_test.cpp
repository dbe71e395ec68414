#include "tools/trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include "tests/support/TestSystem.h"
#include "tests/support/TraceCapture.h"
#include "tools/Assert.h"

namespace {

using namespace Orska;
using Orska::Test::TraceCapture;
using Orska::Test::TraceOnStandardError;
using Orska::Test::TraceSetting;

TEST(trace, WritesLevelsUpToItsOwn) {
    const char* const most = "99999999999999999999";
    const char* const least = "-99999999999999999999";
    const struct {
        const char* m_value;
        int m_level;
        bool m_isWritten;
    } rows[] = {
        {"3", 1, true},     {"3", 3, true},      {"10", 11, false},   {"3", 0, true},
        {"3", -5, true},    {nullptr, 1, false}, {nullptr, 0, false}, {nullptr, -5, false},
        {"0", 0, false},    {"", 1, false},      {"x", 1, false},     {"-1", 0, false},
        {"254", 254, true}, {"300", 254, true},  {"300", 255, false}, {" 3", 3, true},
        {"0st", 0, false},  {"st", 1, false},    {most, 254, true},   {least, 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << (row.m_value == nullptr ? "(null)" : row.m_value)
                                        << " level " << row.m_level);
        EXPECT_EQ(TraceOnStandardError(row.m_value, row.m_level),
                  row.m_isWritten ? "F:7\ttext S\n" : "");
        EXPECT_EQ(s_traceWord.load(), TRACE_NOT_READ);  // removing the setting makes it read again
    }
}

TEST(trace, Fields) {
    using namespace std::string_literals;
    const unsigned thread = Orska::Test::GetThreadId();
    char id[5];
    std::snprintf(id, sizeof id, "%04X", (thread >> 16 ^ thread) & 0xFFFF);
    const std::string pid = std::to_string(getpid());
    const struct {
        const char* m_settings;
        const char* m_function;
        const char* m_file;
        int m_line;
        std::string m_pattern;
    } rows[] = {
        {"1", "A::F", "Folder\\Source", 12, "A::F:12\ttext Source"},
        {"1", nullptr, "Source", 0, "\\(\\?\\):0\ttext Source"},
        {"1", "F", "a\\b\\", -3, "F:-3\ttext "},
        {"1", "F", nullptr, 1, "F:1\ttext"},
        {"1f", "F", "S", 1, "F:1\ttext\t S"},
        {"1n", "F", "S", 1, "F:1\ttext\t"},
        {"1s", "F", "S", 1, "F:1\ttext\t @\\d+\\.\\d{5} S"},
        {"1t", "F", "S", 1, "F:1\ttext\t #"s + id + " S"},
        {"1p", "F", "S", 1, "F:1\ttext\t pid:" + pid + " S"},
        {"2 p,FSTNxyz", "F", "S", 1, "F:1\ttext\t pid:" + pid + " S"},
        {"1npts", "F", "S", 1, "F:1\ttext\t @\\d+\\.\\d{5} #"s + id + " pid:" + pid},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_pattern);
        const TraceCapture capture(row.m_settings);
        trace(1, row.m_function, row.m_file, row.m_line, "text");
        const std::string text = capture.GetText();
        EXPECT_TRUE(std::regex_match(text, std::regex(row.m_pattern + "\n"))) << text;
    }
}

TEST(trace, TheTimeStampCountsSecondsFromTheFirstLine) {
    const TraceCapture capture("1sn");
    trace(1, "F", "S", 1, "a");
    usleep(20000);
    trace(1, "F", "S", 1, "b");
    const std::vector<std::string> lines = capture.GetLines();
    ASSERT_EQ(lines.size(), 2u);
    const double first = std::stod(lines[0].substr(lines[0].find('@') + 1));
    const double second = std::stod(lines[1].substr(lines[1].find('@') + 1));
    EXPECT_LT(first, 10);
    EXPECT_GE(second, first + 0.0199);
}

TEST(trace, ATagIsBeforeTheSource) {
    const TraceCapture capture("1p");
    SetTraceTag("worker 3");
    trace(1, "F", "S", 1, "a");
    SetTraceTag("");
    trace(1, "F", "S", 1, "b");
    SetTraceTag(nullptr);
    const std::string pid = std::to_string(getpid());
    EXPECT_EQ(capture.GetText(),
              "F:1\ta\t pid:" + pid + " worker 3 S\nF:1\tb\t pid:" + pid + " S\n");
}

TEST(trace, TheNameOfErrnoFollowsABlankOrAColon) {
    const struct {
        int m_errno;
        const char* m_name;
    } rows[] = {
        {0, ""},
        {ENOENT, "ENOENT"},
        {ERANGE, "ERANGE"},
        {ETIMEDOUT, "ETIMEDOUT"},  // whose number here differs from the table
        {ENAMETOOLONG, "ENAMETOOLONG"},
        {ENOSYS, "Eunknown"},
        {-1, "Eunknown"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_name);
        const TraceCapture capture("1n");
        errno = row.m_errno;
        ORSKA_TRACE(1, "F", "S", 1, "open: ");
        EXPECT_EQ(errno, row.m_errno);
        trace(1, "F", "S", 1, "%s:", "open");
        EXPECT_EQ(errno, row.m_errno);
        trace(1, "F", "S", 1, "%s", "open: ");
        EXPECT_EQ(errno, row.m_errno);
        EXPECT_THAT(
            capture.GetLines(),
            testing::ElementsAre(std::string("F:1\topen: ") + row.m_name + "\t",
                                 std::string("F:1\topen:") + row.m_name + "\t", "F:1\topen: \t"));
    }
}

TEST(trace, AppendsToAFileThatOthersMayReadAndWrite) {
    const TraceCapture capture("1");
    std::ofstream other(capture.GetPath());
    other << "before\n" << std::flush;
    trace(1, "F", "S", 1, "a");
    EXPECT_EQ(capture.GetText(), "before\nF:1\ta S\n");
    std::filesystem::resize_file(capture.GetPath(), 0);
    trace(1, "F", "S", 1, "b");
    EXPECT_EQ(capture.GetText(), "F:1\tb S\n");
}

TEST(trace, AFileThatCannotBeOpenedMeansStandardError) {
    for (const std::string& value : {std::string("1:/no such folder/trace.log"), std::string("1:"),
                                     std::string("1:."), "1:" + std::string(5000, 'x')}) {
        SCOPED_TRACE(value.substr(0, 80));
        EXPECT_EQ(TraceOnStandardError(value.c_str()), "F:7\ttext S\n");
    }
}

TEST(trace, TheStreamIsWhereLinesGo) {
    {
        const TraceSetting setting("1");
        EXPECT_EQ(GetTraceStream(), stderr);
    }
    const TraceSetting setting(nullptr);
    EXPECT_EQ(GetTraceStream(), nullptr);
}

TEST(Assert, ReportReachesStandardErrorAndTheTraceAndReturns) {
    const TraceCapture trace;
    testing::internal::CaptureStderr();
    ReportAssertionFailure("false", "Setup\\Source", 59);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Assertion failed: false, file Setup\\Source, line 59\n");
    EXPECT_EQ(trace.GetText(),
              "(?):59\tAssertion failed: false, file Setup\\Source, line 59 Source\n");
}

TEST(trace, ArgumentsAreEvaluatedOnlyForALineThatIsWritten) {
    int calls = 0;
    const auto argument = [&calls] { return ++calls; };
    {
        const TraceSetting setting(nullptr);
        ORSKA_TRACE(1, "F", "S", 1, "%d", argument());
        ORSKA_TRACE(1, "F", "S", 1, "%d", argument());
    }
    EXPECT_EQ(calls, 0);
    const TraceCapture capture("1");
    ORSKA_TRACE(2, "F", "S", 1, "%d", argument());
    ORSKA_TRACE(1, "F", "S", 1, "%d", argument());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(capture.GetText(), "F:1\t1 S\n");
}

}  // namespace
