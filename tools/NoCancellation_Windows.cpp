#include "tools/NoCancellation.h"

namespace Orska {

NoCancellation::NoCancellation() noexcept = default;

NoCancellation::~NoCancellation() { static_cast<void>(m_before); }

}  // namespace Orska
