/// The part of the cleared heap (ClearedHeap.cpp) that differs between the systems.
#ifndef CLI_CLEAREDHEAP_H
#define CLI_CLEAREDHEAP_H

namespace Veltrane::Cli {

/// Clears a block of malloc, all that the heap has set apart for it.
void ClearBlock(void* out_block) noexcept;

}  // namespace Veltrane::Cli

#endif
