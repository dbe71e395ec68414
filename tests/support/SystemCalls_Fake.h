/// The system calls of Setup/SystemCalls.h, counted and made to fail or to do less on demand; they
/// are real otherwise, except fsync. Process-wide: set by a test, read by the calls.
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
    /// Called with the name and the number (from 0) of each call before it is made. A result other
    /// than 0 is the errno with which the call fails, without having done anything.
    std::function<int(const std::string&, std::size_t)> m_before;
    /// The most bytes that one read or write moves.
    std::size_t m_maxTransfer = static_cast<std::size_t>(-1);
    /// The file system knows the flags of renameat2.
    bool m_hasRenameFlags = true;
    /// Handles that are open now.
    int m_openHandles = 0;
    /// Sleeps take their time, and do not only move the clock.
    bool m_isSleeping = false;
    /// Added to the clock, in microseconds, by each sleep.
    long long m_sleepBonus = 0;
    long long m_clockOffset = 0;
};

extern FakeSystemCalls s_systemCalls;

}  // namespace Veltrane::Test

#endif
