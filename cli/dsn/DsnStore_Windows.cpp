#include <windows.h>
// Must follow <windows.h>.
#include <shlobj.h>

#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

std::string DsnStore::WhyNotWritable() const { return Profile::WhyNotWritable(); }

/// Registry keys have the system's access lists: a user's keys are for that user; administrators
/// write the system's keys and everybody reads them.
FileRights DsnStore::GetRights() const {
    FileRights rights;
    rights.m_isReadByOthers = m_scope == Scope::System;
    return rights;
}

/// False for an administrator whose rights are not raised.
bool IsAdministrator() { return IsUserAnAdmin() != FALSE; }

std::string DsnStore::FindLeftRecord() const {
    const bool isSystem = m_scope == Scope::System;
    const LONG error = RegGetValueW(isSystem ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                                    L"Software\\Veltrane\\veltrane-dsn", L"Change", RRF_RT_REG_SZ,
                                    nullptr, nullptr, nullptr);
    if (error != ERROR_SUCCESS) return {};
    return std::string(isSystem ? "HKEY_LOCAL_MACHINE" : "HKEY_CURRENT_USER") +
           "\\Software\\Veltrane\\veltrane-dsn\\Change";
}

std::vector<std::string> DsnStore::FindLeftFiles() const { return {}; }

}  // namespace Veltrane::Cli
