/// The one call with which the buffers get memory, so that a test can make it fail. No state.
#ifndef TOOLS_REALLOCATE_H
#define TOOLS_REALLOCATE_H

#include <cstddef>

namespace Orska {

/// The C library's `realloc`. On failure null, and the block stays as it is.
/// @param in_size  bytes
void* Reallocate(void* in_block, std::size_t in_size) noexcept;

}  // namespace Orska

#endif
