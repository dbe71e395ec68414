/// The part of the cleared heap (ClearedHeap.cpp) that differs between the systems.
#ifndef CLI_CLEAREDHEAP_H
#define CLI_CLEAREDHEAP_H

namespace Veltrane::Cli {

/// Clears a block of malloc, including spare room that the heap has given it.
void ClearBlock(void* out_block) noexcept;

}  // namespace Veltrane::Cli

#endif
