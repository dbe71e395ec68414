#include <windows.h>

#include "cli/examine/FileRights.h"

namespace Veltrane::Cli {

/// The keys of the registry have the system's own access lists: a user's are for that user, the
/// system's for administrators to write and for everybody to read.
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
