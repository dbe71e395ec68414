/// The only allocation function of the buffers, so that a test can make it fail. No state.
#ifndef TOOLS_REALLOCATE_H
#define TOOLS_REALLOCATE_H

#include <cstddef>

namespace Orska {

/// `realloc` of the C library. On failure returns null, and the block is unchanged.
/// @param in_size  bytes
void* Reallocate(void* in_block, std::size_t in_size) noexcept;

}  // namespace Orska

#endif
