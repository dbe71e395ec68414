#include "Setup/InstallerCaller.h"

#include "Setup/InstallerLibrary.h"

namespace Veltrane::ODBC {

InstallerCaller::InstallerCaller(const void* in_returnAddress) noexcept
    : m_outer(UseInstallerLibrary(FindInstallerLibrary(in_returnAddress))) {}

InstallerCaller::~InstallerCaller() { UseInstallerLibrary(m_outer); }

bool InstallerCaller::HasPlatformWideChars() const noexcept {
    return GetInstallerLibrary().m_driverManager == DriverManager::IODBC;
}

}  // namespace Veltrane::ODBC
