/// Whether a driver has a library of its own beside its setup library.
#ifndef SETUP_DRIVERLIBRARY_H
#define SETUP_DRIVERLIBRARY_H

#include <string>

namespace Veltrane::ODBC {

/// Whether the driver is registered with a library, so that a test can do more than fail.
/// @param in_driver  UTF-8
/// @return false, too, when the registration cannot be read
bool HasDriverLibrary(const std::string& in_driver);

}  // namespace Veltrane::ODBC

#endif
