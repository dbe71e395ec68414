/// The directory from which the module that holds this code (the library, or the program it is
/// linked into) was loaded.
#ifndef PLATFORMABSTRACTION_BASE_OWNDIRECTORY_H
#define PLATFORMABSTRACTION_BASE_OWNDIRECTORY_H

#include <filesystem>

namespace Orska::Support {

/// A path in the system's form: bytes on Linux, UTF-16 on Windows. Not std::filesystem::path, which
/// links in locales: an eighth of the setup library on Windows.
using NativePath = std::filesystem::path::string_type;

/// The directory of the module's file, absolute and with a separator at its end; empty when the
/// system does not know it. On Linux it is looked up when the module is loaded, with symbolic links
/// resolved: the host can change its working directory later, and its program can be replaced while
/// it runs. Any thread may call.
NativePath GetOwnDirectory();

}  // namespace Orska::Support

#endif
