/// The two exported functions of the setup library. They convert their arguments to orska_wstring
/// and call ConfigDSNInternal. They run on the installer's thread.
///
/// Declared here without an installer's headers: unixODBC and iODBC disagree about the types.
#include <cstddef>

#include "PlatformAbstraction/strings/orska_wstring.h"
#include "Setup/ConfigDSNInternal.h"
#include "Setup/InstallerCaller.h"
#include "Setup/RequestMemory.h"

namespace {

using Orska::Support::orska_wstring;
using Veltrane::ODBC::InstallerCaller;

/// Returns the characters of a list of NUL-terminated entries, without the two NULs at its end. A
/// list that begins with NUL is empty: some callers pass "" with a single NUL, and nothing after it
/// may be read.
template <typename Char>
std::size_t MeasureAttributeList(const Char* in_attributes) {
    if (in_attributes == nullptr || in_attributes[0] == 0) {
        return 0;
    }
    std::size_t count = 0;
    while (in_attributes[count] != 0 || in_attributes[count + 1] != 0) {
        ++count;
    }
    return count;
}

/// The string includes the NUL of the last entry, so every entry ends with one.
template <typename Char>
orska_wstring MakeAttributeString(const Char* in_attributes) {
    const std::size_t count = MeasureAttributeList(in_attributes);
    return count == 0 ? orska_wstring() : orska_wstring(in_attributes, count + 1);
}

template <typename Char>
int ConfigDSNEntry(void* in_parentWindow, unsigned short in_requestType,
                   const Char* in_driverDescription, const Char* in_attributes) noexcept {
    const Veltrane::ODBC::RequestMemory memory;
    try {
        return Veltrane::ODBC::ConfigDSNInternal(in_parentWindow, in_requestType,
                                                 orska_wstring(in_driverDescription),
                                                 MakeAttributeString(in_attributes));
    } catch (...) {
        // No memory for the arguments: the conversion throws nothing else.
        return Veltrane::ODBC::PostCurrentException();
    }
}

}  // namespace

extern "C" {

#ifndef _WIN32
#define VELTRANE_EXPORT __attribute__((visibility("default")))
#else
#define VELTRANE_EXPORT  // exported by name in VeltraneSetup.def
#endif

/// @param in_driverDescription  NUL-terminated, UTF-8
/// @param in_attributes         NUL-terminated key=value entries and an empty one; can be null
/// @return 1, or 0 with one installer error posted (a refused removal posts none)
VELTRANE_EXPORT int ConfigDSN(void* in_parentWindow, unsigned short in_requestType,
                              const char* in_driverDescription, const char* in_attributes) {
    const InstallerCaller caller(__builtin_return_address(0));
    return ConfigDSNEntry(in_parentWindow, in_requestType, in_driverDescription, in_attributes);
}

/// As ConfigDSN, in UTF-16, or in wchar_t if the calling installer uses that.
VELTRANE_EXPORT int ConfigDSNW(void* in_parentWindow, unsigned short in_requestType,
                               const char16_t* in_driverDescription,
                               const char16_t* in_attributes) {
    const InstallerCaller caller(__builtin_return_address(0));
    if (caller.HasPlatformWideChars()) {
        return ConfigDSNEntry(in_parentWindow, in_requestType,
                              reinterpret_cast<const wchar_t*>(in_driverDescription),
                              reinterpret_cast<const wchar_t*>(in_attributes));
    }
    return ConfigDSNEntry(in_parentWindow, in_requestType, in_driverDescription, in_attributes);
}

}  // extern "C"
