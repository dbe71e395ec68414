// The library's own operator delete: each block is cleared before it goes back to the heap of the
// host, so that no copy of a password that a string or a container made stays there. The linker
// (--wrap) leads the calls of this library here, and of nobody else. The real operator is the
// host's to replace.
#include <cstddef>

#include "Setup/RequestMemory.h"

// NOLINTBEGIN: the linker's names, which differ with the mangled name of std::size_t
extern "C" {

void VELTRANE_REAL_DELETE(void* in_block, std::size_t in_size) noexcept;

void VELTRANE_WRAPPED_DELETE(void* in_block, std::size_t in_size) noexcept;
void VELTRANE_WRAPPED_DELETE(void* in_block, std::size_t in_size) noexcept {
    if (in_block != nullptr) Veltrane::ODBC::ClearMemory(in_block, in_size);
    VELTRANE_REAL_DELETE(in_block, in_size);
}

}  // extern "C"
// NOLINTEND
