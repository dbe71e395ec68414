// All pairs with the instructions up to AVX2, BMI2 and POPCNT.
#include "PlatformAbstraction/ICU/Siconv/blocks/BlockForm.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/Vector256.h"

namespace Orska::Support::Siconv {

constexpr TranscoderTable AVX2_TABLE = MakeTranscoderTable<BlockForm<Vector256>>();

}  // namespace Orska::Support::Siconv
