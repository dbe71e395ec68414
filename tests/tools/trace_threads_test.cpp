#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "tests/support/TestSystem.h"
#include "tests/support/TraceCapture.h"
#include "tools/trace.h"

namespace {

using namespace Orska;
using Orska::Test::TraceCapture;

constexpr int PROCESSES = 2;
constexpr int THREADS = 8;
constexpr int LINES = 400;

/// Lengths around the sizes of the buffers of a stream and of a line.
std::size_t PayloadSize(int in_index) {
    constexpr std::size_t SIZES[] = {1, 40, 500, 4040, 4096, 9300, 9999, 20000};
    return SIZES[in_index % 8] + static_cast<std::size_t>(in_index % 7);
}

std::string Payload(int in_process, int in_thread, int in_index) {
    return std::string(PayloadSize(in_index),
                       static_cast<char>('a' + in_process * THREADS + in_thread));
}

void TraceFromThreads(int in_process) {
    std::vector<std::thread> threads;
    threads.reserve(THREADS);
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([=] {
            for (int i = 0; i < LINES; ++i) {
                ORSKA_TRACE(1, "F", "S", i, "%d %d %s", in_process, thread,
                            Payload(in_process, thread, i).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

class TraceThreads : public testing::TestWithParam<const char*> {};

TEST_P(TraceThreads, NoLineIsTornOrLost) {
    const TraceCapture capture(GetParam());
    const int processes = Orska::Test::RunInProcesses(PROCESSES, TraceFromThreads);
    ASSERT_GE(processes, 1);
    const bool hasFlags = std::string(GetParam()) != "1";
    std::map<std::pair<int, int>, int> next;
    int torn = 0;
    for (const std::string& line : capture.GetLines()) {
        int index = -1, process = -1, thread = -1;
        std::sscanf(line.c_str(), "F:%d\t%d %d ", &index, &process, &thread);
        const std::string expected = "F:" + std::to_string(index) + "\t" + std::to_string(process) +
                                     " " + std::to_string(thread) + " " +
                                     Payload(process, thread, index) + (hasFlags ? "\t S" : " S");
        // The lines of one thread are in the order in which it wrote them.
        if (index < 0 || line != expected || next[{process, thread}]++ != index) {
            ++torn;
        }
    }
    EXPECT_EQ(torn, 0);
    ASSERT_EQ(next.size(), static_cast<std::size_t>(processes * THREADS));
    for (const auto& [who, count] : next) {
        EXPECT_EQ(count, LINES) << "process " << who.first << " thread " << who.second;
    }
}

INSTANTIATE_TEST_SUITE_P(Flags, TraceThreads, testing::Values("1", "1f"),
                         [](const auto& in_info) { return std::to_string(in_info.index); });

}  // namespace
