#include "PlatformAbstraction/base/orska_abort.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <semaphore>
#include <thread>

namespace Orska::Support {

namespace {

constexpr char FORMAT[] = "orska_abort() called from %s:%d for reason: %s";

/// Another thread can keep a stream locked for ever, for example while it waits for input. So each
/// task runs in a new thread, which is abandoned if it blocks.
/// @return whether the task ended in time
template <typename Task>
bool HasDone(const Task& in_task) noexcept {
    constexpr std::chrono::seconds LONGEST{1};
    try {
        const auto isDone = std::make_shared<std::binary_semaphore>(0);
        std::thread([in_task, isDone] {
            in_task();
            isDone->release();
        }).detach();
        return isDone->try_acquire_for(LONGEST);
    } catch (const std::exception&) {
        return false;  // no thread could be started
    }
}

}  // namespace

void orska_abort(const char* in_file, int in_line, const char* in_reason) noexcept {
    const bool isWritten = HasDone([=] {
        std::fprintf(stderr, FORMAT, in_file, in_line, in_reason);
        std::fflush(stderr);
    });
    if (!isWritten) {
        char text[4096];
        const int length = std::snprintf(text, sizeof text, FORMAT, in_file, in_line, in_reason);
        const int size = std::clamp(length, 0, static_cast<int>(sizeof text) - 1);
        static_cast<void>(!write(STDERR_FILENO, text, static_cast<unsigned>(size)));
    }
    // Flushing all streams blocks at the first locked one.
    HasDone([] { std::fflush(stdout); });
    HasDone([] { std::fflush(nullptr); });
    std::abort();
}

}  // namespace Orska::Support
