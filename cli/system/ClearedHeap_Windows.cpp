#include <malloc.h>
#include <windows.h>

#include "cli/system/ClearedHeap.h"

namespace Veltrane::Cli {

void ClearBlock(void* out_block) noexcept { SecureZeroMemory(out_block, _msize(out_block)); }

}  // namespace Veltrane::Cli
