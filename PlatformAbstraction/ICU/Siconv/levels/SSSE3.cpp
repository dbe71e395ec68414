// All pairs with the instructions up to SSSE3.
#include "PlatformAbstraction/ICU/Siconv/blocks/BlockForm.h"

namespace Orska::Support::Siconv {

constexpr TranscoderTable SSSE3_TABLE = MakeTranscoderTable<BlockForm<Vector128>>();

}  // namespace Orska::Support::Siconv
