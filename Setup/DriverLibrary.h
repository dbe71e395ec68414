/// Whether a driver has a library besides its setup library.
#ifndef SETUP_DRIVERLIBRARY_H
#define SETUP_DRIVERLIBRARY_H

#include <string>

namespace Veltrane::ODBC {

/// Whether the driver is registered with a library. Without one, a connection test can only fail.
/// @param in_driver  UTF-8
/// @return false also when the registration cannot be read
bool HasDriverLibrary(const std::string& in_driver);

}  // namespace Veltrane::ODBC

#endif
