/// Whether this process has more rights than other programs of its user (UAC), from which its
/// environment can come.
#ifndef TOOLS_RAISEDRIGHTS_H
#define TOOLS_RAISEDRIGHTS_H

#include "tools/WindowsApi.h"

namespace Orska {

/// @return true also when the system gives no answer. False for services and if UAC is off: all
///         programs of the user then have the same rights.
inline bool HasRaisedRights() noexcept {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) {
        return true;
    }
    TOKEN_ELEVATION_TYPE type = TokenElevationTypeFull;
    DWORD size = 0;
    GetTokenInformation(token, TokenElevationType, &type, sizeof type, &size);
    CloseHandle(token);
    if (type != TokenElevationTypeFull) {
        return false;
    }
    // Wine has that type too, and reports here that it has no UAC.
    DWORD isOn = 1;
    size = sizeof isOn;
    RegGetValueW(HKEY_LOCAL_MACHINE,
                 L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\System", L"EnableLUA",
                 RRF_RT_REG_DWORD, nullptr, &isOn, &size);
    return isOn != 0;
}

}  // namespace Orska

#endif
