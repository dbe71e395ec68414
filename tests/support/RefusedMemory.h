/// Operators new and delete that count and can refuse. Included by one source of a program, which
/// defines PlainMalloc.
#ifndef TESTS_SUPPORT_REFUSEDMEMORY_H
#define TESTS_SUPPORT_REFUSEDMEMORY_H

#include <cstdlib>
#include <new>

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

#endif
