#include <malloc.h>

#include <cstring>

#include "cli/system/ClearedHeap.h"

namespace Veltrane::Cli {

void ClearBlock(void* out_block) noexcept {
    explicit_bzero(out_block, malloc_usable_size(out_block));
}

}  // namespace Veltrane::Cli
