#include "Setup/SystemCalls.h"
#include "cli/dsn/DsnStore.h"
#include "cli/system/FreeSpace.h"

namespace Veltrane::Cli {

std::string DsnStore::WhyNotWritable() const {
    const std::string reason = m_profile.WhyNotWritable();
    return reason.empty() ? WhyNoRoomBeside(GetPath()) : reason;
}

/// Beside the file itself when its path is a link.
std::string DsnStore::FindLeftRecord() const {
    const std::string real = ODBC::SystemCalls::RealPath(GetPath().c_str());
    const std::string path = (real.empty() ? GetPath() : real) + ".veltrane-dsn-change";
    struct stat status {};
    const bool isLeft = ODBC::SystemCalls::Stat(path.c_str(), status, false) == 0;
    return isLeft && status.st_size > 0 ? path : std::string();
}

}  // namespace Veltrane::Cli
