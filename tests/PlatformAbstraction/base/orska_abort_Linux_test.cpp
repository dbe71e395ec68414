#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <semaphore>
#include <thread>

#include "PlatformAbstraction/base/orska_abort.h"
#include "tests/support/TestSystem.h"

namespace Orska::Support {
namespace {

using Test::IsAborted;

// The thread sanitizer's own abort() flushes standard error and waits for it.
#if defined(__SANITIZE_THREAD__)
constexpr bool FLUSHES_STDERR = true;
#elif defined(__has_feature)
constexpr bool FLUSHES_STDERR = __has_feature(thread_sanitizer);
#else
constexpr bool FLUSHES_STDERR = false;
#endif

TEST(OrskaAbortDeathTest, DoesNotWaitForAThreadThatKeepsAStream) {
    std::FILE* const newest = std::fopen("/dev/null", "r");
    for (std::FILE* const stream : {stdin, stderr, newest}) {
        if (stream == stderr && FLUSHES_STDERR) continue;
        EXPECT_EXIT(
            {
                std::binary_semaphore isKept{0};
                std::thread([&] {
                    flockfile(stream);
                    isKept.release();
                    pause();
                }).detach();
                isKept.acquire();
                dup2(STDERR_FILENO, STDOUT_FILENO);
                std::printf("host's text, ");
                std::signal(SIGALRM, SIG_DFL);
                alarm(20);  // ends the process if it waits
                orska_abort("Source", 1, "a reason");
            },
            IsAborted, "a reason.*host's text");
    }
    std::fclose(newest);
}

}  // namespace
}  // namespace Orska::Support
