// The library's own operator delete. It clears each block before the host's heap gets it back, so
// that no copy of a password in a string or a container stays there. The linker (--wrap) redirects
// only the calls of this library. The host can still replace the real operator.
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
