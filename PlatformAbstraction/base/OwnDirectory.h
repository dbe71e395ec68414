/// Where the module that holds this code (the library, or the program it is linked into) was loaded
/// from.
#ifndef PLATFORMABSTRACTION_BASE_OWNDIRECTORY_H
#define PLATFORMABSTRACTION_BASE_OWNDIRECTORY_H

#include <filesystem>

namespace Orska::Support {

/// A path as the system has it: bytes on Linux, UTF-16 on Windows. Not a path object, whose code
/// brings locales along: an eighth of the setup library on Windows.
using NativePath = std::filesystem::path::string_type;

/// The directory of the module's file, absolute and with a separator at its end; empty when the
/// system does not tell. On Linux it is found when the module is loaded, without symbolic links: a
/// host may change its working directory later, and its program may be replaced while it runs. Any
/// thread may ask.
NativePath GetOwnDirectory();

}  // namespace Orska::Support

#endif
