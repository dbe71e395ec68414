/// Makes the process appear as one with rights raised by UAC. In Wine every process is an
/// administrator's, so an empty HKEY_LOCAL_MACHINE, which does not say that UAC is off, is enough.
#ifndef TESTS_SUPPORT_RAISEDRIGHTS_H
#define TESTS_SUPPORT_RAISEDRIGHTS_H

#include "tools/WindowsApi.h"

namespace Orska::Test {

class RaisedRights {
public:
    RaisedRights() {
        HKEY empty = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Veltrane Tests\\Empty", 0, nullptr, 0,
                        KEY_READ, nullptr, &empty, nullptr);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, empty);
        RegCloseKey(empty);
    }
    RaisedRights(const RaisedRights&) = delete;
    RaisedRights& operator=(const RaisedRights&) = delete;
    ~RaisedRights() { RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr); }
};

}  // namespace Orska::Test

#endif
