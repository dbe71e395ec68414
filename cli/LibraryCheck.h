/// Why a shared library cannot be loaded.
#ifndef CLI_LIBRARYCHECK_H
#define CLI_LIBRARYCHECK_H

#include <string>

namespace Veltrane::Cli {

/// Loads the library in a process of its own.
/// @param in_symbol  what it has to export; null for nothing
/// @return what is wrong and how to repair it; empty when nothing is
std::string FindLibraryFault(const std::string& in_path, const char* in_symbol);

}  // namespace Veltrane::Cli

#endif
