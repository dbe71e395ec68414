// All pairs with the instructions up to AVX-512 VBMI2.
#include "PlatformAbstraction/ICU/Siconv/windows512/WindowForm.h"

namespace Orska::Support::Siconv {

constexpr TranscoderTable AVX512_TABLE = MakeTranscoderTable<WindowForm>();

}  // namespace Orska::Support::Siconv
