#include <windows.h>

#include "cli/examine/FileRights.h"

namespace Veltrane::Cli {

/// Registry keys have the system's access lists: a user's keys are for that user; administrators
/// write the system's keys and everybody reads them.
FileRights GetFileRights(const std::string& in_path) {
    FileRights rights;
    rights.m_isReadByOthers = in_path.starts_with("HKEY_LOCAL_MACHINE\\");
    return rights;
}

bool IsAdministrator() {
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
    PSID group = nullptr;
    BOOL isMember = FALSE;
    if (AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID,
                                 DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0, &group) == FALSE) {
        return false;
    }
    // False for an administrator whose rights are not raised.
    const BOOL isKnown = CheckTokenMembership(nullptr, group, &isMember);
    FreeSid(group);
    return isKnown != FALSE && isMember != FALSE;
}

}  // namespace Veltrane::Cli
