#include "VeltraneDialog/VeltraneDSNDialog.h"

#include <stdexcept>

namespace Veltrane::ODBC {

int VeltraneDSNDialog::ShowDialog() {
    throw std::runtime_error(
        "No DSN editor can be shown here. Repeat the request without a parent window: the values "
        "are then taken from the file that VELTRANE_DSN_INITIAL_VALUES names.");
}

}  // namespace Veltrane::ODBC
