/// Clears every block of the C++ heap before it is freed, so that no copy of a password in a
/// string, a container or a parser stays in memory. The process is small and ends soon, so the cost
/// does not matter.
#include <cstdlib>
#include <new>

#include "cli/system/Process.h"

// The forms for arrays call these.
void* operator new(std::size_t in_size) {
    void* const block = std::malloc(in_size == 0 ? 1 : in_size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void operator delete(void* in_block) noexcept {
    if (in_block == nullptr) return;
    Veltrane::Cli::ClearBlock(in_block);
    std::free(in_block);
}
void operator delete(void* in_block, std::size_t) noexcept { operator delete(in_block); }
