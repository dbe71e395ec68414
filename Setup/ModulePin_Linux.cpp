#include "Setup/ModulePin.h"

namespace Veltrane::ODBC {

// The library is linked so that nothing unloads it (nodelete).
void PinModule() noexcept {}

}  // namespace Veltrane::ODBC
