// The trace's file on Linux.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>
#include <thread>

#include "PlatformAbstraction/base/VerboseTrace.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/TraceCapture.h"
#include "tools/trace.h"

namespace {

using namespace Orska;
using Orska::Test::TraceCapture;
using Orska::Test::TraceOnStandardError;
using Orska::Test::TraceSetting;

TEST(trace, APipeWithoutAReaderMeansStandardError) {
    const std::string fifo = testing::TempDir() + "orska_pipe" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(TraceOnStandardError(("1:" + fifo).c_str()), "F:7\ttext S\n");
    unlink(fifo.c_str());
}

/// True if a copy of this process survives the action.
bool Survives(const std::function<void()>& in_action) {
    return Orska::Test::RunInProcesses(1, [&](int) { in_action(); }) == 1;
}

TEST(trace, AHostOutlivesAFileThatCannotBeWritten) {
    const Orska::Test::TemporaryDirectory directory;
    const std::string fifo = directory.GetPath("pipe");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_TRUE(Survives([&] {
        const int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
        const TraceSetting setting(("1f:" + fifo).c_str());
        trace(1, "F", "S", 1, "read");
        close(reader);
        errno = EINTR;
        trace(1, "F", "S", 1, "lost");
        EXPECT_EQ(errno, EINTR);
        // A signal that is pending for the host stays pending.
        sigset_t pipeOnly, pending;
        sigemptyset(&pipeOnly);
        sigaddset(&pipeOnly, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipeOnly, nullptr);
        raise(SIGPIPE);
        trace(1, "F", "S", 1, "lost");
        sigpending(&pending);
        if (sigismember(&pending, SIGPIPE) != 1) _exit(1);
    })) << "no reader";
    EXPECT_TRUE(Survives([&] {
        const TraceSetting setting(("1:" + directory.GetPath("file")).c_str());
        const rlimit limit = {60, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
        for (int i = 0; i < 9; ++i) trace(1, "F", "S", 1, "limited");
    })) << "file size limit";
    EXPECT_EQ(directory.Read("file").size(), 60u);
    EXPECT_TRUE(Survives([] {
        int ends[2];
        if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0) _exit(1);
        for (const int end : ends) close(end);
        Platform::SetVerbose(true);
        Platform::TraceVerbose("lost");
    })) << "verbose trace";
}

TEST(trace, TheFileLeavesTheStandardDescriptorsAlone) {
    const Orska::Test::TemporaryDirectory directory;
    EXPECT_TRUE(Survives([&] {
        for (const int standard : {0, 1, 2}) close(standard);
        const TraceSetting setting(("1:" + directory.GetPath("file")).c_str());
        trace(1, "F", "S", 1, "x");
        for (const int standard : {0, 1, 2}) {
            if (write(standard, "host\n", 5) == 5) _exit(1);
        }
    }));
    EXPECT_EQ(directory.Read("file"), "F:1\tx S\n");
}

TEST(trace, ACancelledThreadEndsAloneAndItsLineIsWhole) {
    const TraceCapture capture("1f");
    EXPECT_TRUE(Survives([] {
        std::thread thread([] {
            pthread_cancel(pthread_self());
            trace(1, "F", "S", 1, "x");
            pthread_testcancel();
            _exit(1);
        });
        thread.join();
    }));
    EXPECT_EQ(capture.GetText(), "F:1\tx\t S\n");
}

TEST(trace, TheFileIsNotInherited) {
    const TraceCapture capture("1");
    EXPECT_EQ(fcntl(fileno(GetTraceStream()), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    const int status = fcntl(fileno(GetTraceStream()), F_GETFL);
    EXPECT_EQ(status & (O_APPEND | O_NONBLOCK), O_APPEND);
}

}  // namespace
