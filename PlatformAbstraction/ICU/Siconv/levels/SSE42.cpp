// All pairs with the instructions up to SSE4.2 and POPCNT.
#include "PlatformAbstraction/ICU/Siconv/blocks/BlockForm.h"

namespace Orska::Support::Siconv {

constexpr TranscoderTable SSE42_TABLE = MakeTranscoderTable<BlockForm<Vector128>>();

}  // namespace Orska::Support::Siconv
