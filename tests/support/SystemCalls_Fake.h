/// The system calls of Setup/SystemCalls.h. They are counted, and fail or do less on demand;
/// otherwise they are real, except fsync. Process-wide: set by a test, read by the calls.
#ifndef TESTS_SUPPORT_SYSTEMCALLS_FAKE_H
#define TESTS_SUPPORT_SYSTEMCALLS_FAKE_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Veltrane::Test {

struct FakeSystemCalls {
    /// The names of the calls made: "open", "flock", ...
    std::vector<std::string> m_calls;
    /// Called with the name and the number (from 0) of each call before it is made. If the result
    /// is not 0, the call does nothing and fails with it as errno.
    std::function<int(const std::string&, std::size_t)> m_before;
    /// The most bytes of one read or write.
    std::size_t m_maxTransfer = static_cast<std::size_t>(-1);
    /// The file system supports the flags of renameat2.
    bool m_hasRenameFlags = true;
    /// Handles that are open now.
    int m_openHandles = 0;
    /// Sleeps take real time, besides moving the clock.
    bool m_isSleeping = false;
    /// Microseconds that each sleep adds to the clock.
    long long m_sleepBonus = 0;
    long long m_clockOffset = 0;
};

extern FakeSystemCalls s_systemCalls;

}  // namespace Veltrane::Test

#endif
