/// Which installer called an entry point. A process can load several driver managers, and their
/// installer libraries have functions of the same names.
#ifndef SETUP_INSTALLERCALLER_H
#define SETUP_INSTALLERCALLER_H

#include "tools/NoCancellation.h"

namespace Veltrane::ODBC {

struct InstallerLibrary;

/// While it lives, the calling thread uses the caller's installer library. On Linux it also
/// postpones a cancellation of the thread until the call returns: unwinding through noexcept
/// functions would terminate the host. On Windows it keeps this library loaded, although the
/// installer frees it after every request; on Linux the library is linked with nodelete.
class InstallerCaller {
public:
    /// @param in_returnAddress  of the entry point
    explicit InstallerCaller(const void* in_returnAddress) noexcept;
    InstallerCaller(const InstallerCaller&) = delete;
    InstallerCaller& operator=(const InstallerCaller&) = delete;
    ~InstallerCaller();

    /// Whether the caller's wide characters are wchar_t; otherwise they are UTF-16.
    bool HasPlatformWideChars() const noexcept;

private:
    Orska::NoCancellation m_noCancellation;  // first: finding the library can be cancelled, too
    const InstallerLibrary* m_outer = nullptr;
};

}  // namespace Veltrane::ODBC

#endif
