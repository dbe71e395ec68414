#include "Setup/InstallerCaller.h"

namespace Veltrane::ODBC {

// There is one installer, the system's.
InstallerCaller::InstallerCaller(const void* /*in_returnAddress*/) noexcept {}

InstallerCaller::~InstallerCaller() = default;

bool InstallerCaller::HasPlatformWideChars() const noexcept { return false; }

}  // namespace Veltrane::ODBC
