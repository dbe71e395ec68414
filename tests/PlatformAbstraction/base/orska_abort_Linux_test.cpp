#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "PlatformAbstraction/base/orska_abort.h"
#include "tests/support/TestSystem.h"

namespace Orska::Support {
namespace {

using Test::IsAborted;

TEST(OrskaAbortDeathTest, DoesNotWaitForAThreadThatReads) {
    EXPECT_EXIT(
        {
            int ends[2];
            if (pipe(ends) != 0) std::exit(1);
            dup2(ends[0], STDIN_FILENO);
            std::thread([] { std::getchar(); }).detach();
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            std::signal(SIGALRM, SIG_DFL);
            alarm(20);  // another way to end, where it waits
            orska_abort("Source", 1, "while reading");
        },
        IsAborted, "while reading");
}

}  // namespace
}  // namespace Orska::Support
