/// The work that the tool does in a separate process, `veltrane-dsn test - --apart`: it runs
/// libraries of others, which can hang, crash, print or start processes.
#ifndef CLI_APARTWORK_H
#define CLI_APARTWORK_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Veltrane::Cli {

/// Asks a new process. Blocks for at most 20 s.
/// @param in_kind  "library": the fault of the library `in_text` as a digit, and its detail;
///                 "driver": whether the setup library of that driver answers the installer
/// @return the answer; empty if the process ended without one or took longer
std::string AskApart(const char* in_kind, const std::string& in_text,
                     const std::vector<std::string>& in_functions = {});

/// Runs in that process: reads a request from standard input, also that of a connection test, and
/// writes the result to standard output.
void DoApartWork();

/// One line of JSON. Bytes that are not UTF-8 become U+FFFD.
std::string ToLine(const nlohmann::ordered_json& in_document);

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
