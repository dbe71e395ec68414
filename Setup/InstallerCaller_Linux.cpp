#include "Setup/InstallerCaller.h"

#include <pthread.h>

#include "Setup/InstallerLibrary.h"

namespace Veltrane::ODBC {

InstallerCaller::InstallerCaller(const void* in_returnAddress) noexcept
    : m_outer(UseInstallerLibrary(FindInstallerLibrary(in_returnAddress))) {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
}

InstallerCaller::~InstallerCaller() {
    UseInstallerLibrary(m_outer);
    pthread_setcancelstate(m_cancelState, nullptr);
}

bool InstallerCaller::HasPlatformWideChars() const noexcept {
    return GetInstallerLibrary().m_driverManager == DriverManager::IODBC;
}

}  // namespace Veltrane::ODBC
