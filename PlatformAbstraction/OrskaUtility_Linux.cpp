#include <cerrno>
#include <cstring>

#include "PlatformAbstraction/OrskaUtility.h"

namespace Orska::Support {

std::uint32_t GetLastErrorCode() noexcept { return static_cast<std::uint32_t>(errno); }

bool FormatSystemMessage(std::uint32_t in_code, orska_wstring& out_text) {
    const int code = static_cast<int>(in_code);
    // strerror_r makes up a text for every number; only this call tells which errors exist.
    if (strerrordesc_np(code) == nullptr) {
        errno = EINVAL;
        return false;
    }
    char buffer[256];
    out_text.SetFromUtf8(strerror_r(code, buffer, sizeof buffer), orska_wstring::NUL_TERMINATED);
    return true;
}

bool FormatNtStatusMessage(std::uint32_t /*in_code*/, orska_wstring& /*out_text*/) {
    errno = ENOSYS;
    return false;
}

}  // namespace Orska::Support
