/// Where the module that holds this code (the library, or the program it is linked into) was loaded
/// from.
#ifndef PLATFORMABSTRACTION_BASE_OWNDIRECTORY_H
#define PLATFORMABSTRACTION_BASE_OWNDIRECTORY_H

#include <filesystem>

namespace Orska::Support {

/// The directory of the module's file, absolute and with a separator at its end; empty when the
/// system does not tell. On Linux it is found when the module is loaded, without symbolic links: a
/// host may change its working directory later, and its program may be replaced while it runs. Any
/// thread may ask.
std::filesystem::path GetOwnDirectory();

}  // namespace Orska::Support

#endif
