/// Every block of the C++ heap is cleared before it is given back, so that no copy of a password
/// that a string, a container or a parser made stays in memory. The process is short-lived and
/// small; the cost does not show.
#include "cli/system/ClearedHeap.h"

#include <cstdlib>
#include <new>

namespace {

void ClearAndFree(void* in_block) noexcept {
    if (in_block == nullptr) return;
    Veltrane::Cli::ClearBlock(in_block);
    std::free(in_block);
}

void* Allocate(std::size_t in_size) {
    void* const block = std::malloc(in_size == 0 ? 1 : in_size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t in_size) { return Allocate(in_size); }
void* operator new[](std::size_t in_size) { return Allocate(in_size); }
void operator delete(void* in_block) noexcept { ClearAndFree(in_block); }
void operator delete[](void* in_block) noexcept { ClearAndFree(in_block); }
void operator delete(void* in_block, std::size_t) noexcept { ClearAndFree(in_block); }
void operator delete[](void* in_block, std::size_t) noexcept { ClearAndFree(in_block); }
