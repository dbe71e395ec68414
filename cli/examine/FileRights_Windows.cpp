#include <windows.h>
// Must follow <windows.h>.
#include <shlobj.h>

#include "cli/examine/FileRights.h"

namespace Veltrane::Cli {

/// Registry keys have the system's access lists: a user's keys are for that user; administrators
/// write the system's keys and everybody reads them.
FileRights GetFileRights(const std::string& in_path) {
    FileRights rights;
    rights.m_isReadByOthers = in_path.starts_with("HKEY_LOCAL_MACHINE\\");
    return rights;
}

/// False for an administrator whose rights are not raised.
bool IsAdministrator() { return IsUserAnAdmin() != FALSE; }

}  // namespace Veltrane::Cli
