// The trace's file as the system has it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "tests/support/TraceCapture.h"
#include "tools/trace.h"

namespace {

using namespace Orska;
using Orska::Test::TraceCapture;
using Orska::Test::TraceOnStandardError;
using Orska::Test::TraceSetting;

TEST(trace, TheThreadIdIsFoldedTo16Bits) {
    const TraceCapture capture("1tn");
    trace(1, "F", "S", 1, "x");
    const auto id = static_cast<unsigned>(gettid());
    char expected[32];
    std::snprintf(expected, sizeof expected, "F:1\tx\t #%04X\n", id >> 16 ^ (id & 0xFFFF));
    EXPECT_EQ(capture.GetText(), expected);
}

TEST(trace, ErrnoIsKeptWhenTheLineCannotBeWritten) {
    const TraceSetting setting("1:/dev/full");
    errno = EINTR;
    trace(1, "F", "S", 1, "lost");
    EXPECT_EQ(errno, EINTR);
}

TEST(trace, AppendsToAFileThatOthersMayReadAndWrite) {
    const TraceCapture capture("1");
    const int other = open(capture.GetPath().c_str(), O_WRONLY | O_CREAT, 0666);
    ASSERT_EQ(write(other, "before\n", 7), 7);
    trace(1, "F", "S", 1, "a");
    EXPECT_EQ(capture.GetText(), "before\nF:1\ta S\n");
    ASSERT_EQ(ftruncate(other, 0), 0);
    trace(1, "F", "S", 1, "b");
    EXPECT_EQ(capture.GetText(), "F:1\tb S\n");
    close(other);
}

TEST(trace, APipeWithoutAReaderMeansStandardError) {
    const std::string pipe = testing::TempDir() + "orska_pipe" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(TraceOnStandardError(("1:" + pipe).c_str()), "F:7\ttext S\n");
    unlink(pipe.c_str());
}

TEST(trace, TheFileIsNotInherited) {
    const TraceCapture capture("1");
    EXPECT_EQ(fcntl(fileno(GetTraceStream()), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    const int status = fcntl(fileno(GetTraceStream()), F_GETFL);
    EXPECT_EQ(status & (O_APPEND | O_NONBLOCK), O_APPEND);
}

}  // namespace
