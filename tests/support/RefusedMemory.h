/// Operators new and delete that count and can refuse, and a check of requests under them. Included
/// by the only source of a program, which defines PlainMalloc.
#ifndef TESTS_SUPPORT_REFUSEDMEMORY_H
#define TESTS_SUPPORT_REFUSEDMEMORY_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <new>
#include <string>

namespace {

/// Counts the allocations of our code and of its libraries, and refuses some. Process-wide: set by
/// a test, read by the allocations.
struct Memory {
    bool m_isCounting = false;
    std::size_t m_count = 0;
    std::size_t m_firstRefused = 0;
    std::size_t m_refusals = 0;  ///< how many are refused, from the first on
    long m_live = 0;             ///< objects from operator new that still exist

    void Start(std::size_t in_firstRefused, std::size_t in_refusals) {
        m_count = 0;
        m_firstRefused = in_firstRefused;
        m_refusals = in_refusals;
        m_isCounting = true;
    }
};
Memory s_memory;

bool IsRefused() {
    if (!s_memory.m_isCounting) return false;
    const std::size_t number = s_memory.m_count++;
    return number >= s_memory.m_firstRefused &&
           number - s_memory.m_firstRefused < s_memory.m_refusals;
}

/// The allocation under all others.
void* PlainMalloc(std::size_t in_size);

}  // namespace

// NOLINTBEGIN: the names and signatures are the language's
void* operator new(std::size_t in_size, const std::nothrow_t&) noexcept {
    void* const memory = IsRefused() ? nullptr : PlainMalloc(in_size == 0 ? 1 : in_size);
    s_memory.m_live += memory != nullptr ? 1 : 0;
    return memory;
}
void* operator new(std::size_t in_size) {
    void* const memory = operator new(in_size, std::nothrow);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void* operator new[](std::size_t in_size) { return operator new(in_size); }
void operator delete(void* in_memory) noexcept {
    s_memory.m_live -= in_memory != nullptr ? 1 : 0;
    std::free(in_memory);
}
void operator delete[](void* in_memory) noexcept { operator delete(in_memory); }
void operator delete(void* in_memory, std::size_t) noexcept { operator delete(in_memory); }
void operator delete[](void* in_memory, std::size_t) noexcept { operator delete(in_memory); }
// NOLINTEND

namespace {

constexpr std::size_t ALL_REFUSED = std::numeric_limits<std::size_t>::max();

template <typename Request>
int RunWithout(const Request& in_request, std::size_t in_first, std::size_t in_refusals) {
    in_request.Prepare();
    s_memory.Start(in_first, in_refusals);
    const int result = in_request.Run();
    s_memory.m_isCounting = false;
    return result;
}

/// Refuses each allocation of a request, and perhaps those after it: the request returns 0 with one
/// error if there is memory for one.
template <typename Request>
void RefuseEach(const Request& in_request, std::size_t in_refusals) {
    RunWithout(in_request, 0, 0);
    const std::size_t count = s_memory.m_count;
    ASSERT_GT(count, 10u);
    for (std::size_t number = 0; number < count && !testing::Test::HasFailure(); ++number) {
        const int result = RunWithout(in_request, number, in_refusals);
        SCOPED_TRACE(in_request.Describe() + ", allocation " + std::to_string(number) + " of " +
                     std::to_string(count));
        const std::size_t errors = in_request.CountErrors();
        EXPECT_LE(errors, result == 0 ? 1u : 0u);
        if (in_refusals == 1) {
            EXPECT_EQ(errors, result == 0 ? 1u : 0u);
        }
        EXPECT_TRUE(in_request.IsRestWhole());
    }
}

/// Checks that nothing crashes or leaks.
template <typename Request>
void RunOutOfMemory(const Request& in_request) {
    // The first requests make everything that is made once, also in the test.
    for (const std::size_t refusals : {std::size_t{1}, ALL_REFUSED}) {
        RefuseEach(in_request, refusals);
    }
    RunWithout(in_request, 0, 0);
    const long live = s_memory.m_live;
    for (const std::size_t refusals : {std::size_t{1}, ALL_REFUSED}) {
        RefuseEach(in_request, refusals);
    }
    RunWithout(in_request, 0, 0);
    EXPECT_EQ(s_memory.m_live, live) << in_request.Describe() << ": leaks";
}

}  // namespace

#endif
