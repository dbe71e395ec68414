#include "PlatformAbstraction/base/orska_abort.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <semaphore>
#include <system_error>
#include <thread>

namespace Orska::Support {

namespace {

/// Flushes all output streams but those that another thread keeps locked, as one does that waits
/// for input: the flush would wait with it, so it has a thread of its own, which is left there.
void FlushStreams() noexcept {
    constexpr std::chrono::seconds LONGEST_FLUSH{1};
    static std::binary_semaphore s_isFlushed{0};
    try {
        std::thread([] {
            std::fflush(nullptr);
            s_isFlushed.release();
        }).detach();
        static_cast<void>(s_isFlushed.try_acquire_for(LONGEST_FLUSH));
    } catch (const std::system_error&) {
        // No thread is to be had; the reason has been written.
    }
}

}  // namespace

void orska_abort(const char* in_file, int in_line, const char* in_reason) noexcept {
    std::fprintf(stderr, "orska_abort() called from %s:%d for reason: %s", in_file, in_line,
                 in_reason);
    FlushStreams();
    std::abort();
}

}  // namespace Orska::Support
