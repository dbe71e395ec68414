/// Tests whether a shared library can be loaded into a process like this one, and if not, why.
#ifndef CLI_LIBRARYPROBE_H
#define CLI_LIBRARYPROBE_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

enum class LibraryFault {
    None,
    NotFound,           ///< no such file, or not readable; the detail is the system's reason
    NotALibrary,        ///< not an ELF shared object, not a DLL
    WrongArchitecture,  ///< the detail names both
    MissingDependency,  ///< the detail is the name of the missing library
    MissingSymbol,      ///< the detail is the symbol that no library defines
    CannotLoad,         ///< any other reason of the loader, in the detail
    Crashes,            ///< loading it ends the process
    NoEntryPoint        ///< none of the wanted functions is exported; the detail lists them
};

struct LibraryProbe {
    LibraryFault m_fault = LibraryFault::None;
    std::string m_detail;
};

/// Loads the library in a separate process, so that it cannot affect this one. On Windows no code
/// of it runs.
/// @param in_path  a path, or a bare name, which is searched for as by the loader
/// @param in_functions  one of them has to be exported; empty for no requirement
LibraryProbe ProbeLibrary(const std::string& in_path, const std::vector<std::string>& in_functions);

/// Loads the library into this process, the separate one.
/// @param out_library  unless there is a fault
LibraryProbe LoadHere(const std::string& in_path, void*& out_library);

}  // namespace Veltrane::Cli

#endif
