#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "PlatformAbstraction/base/OwnDirectory.h"
#include "PlatformAbstraction/files/FileSystemUtils.h"

namespace Orska::Support {

std::filesystem::path FileSystemUtils::GetNativePath(const orska_wstring& in_path) {
    std::string path = in_path.GetAsUtf8();
    if (path.find('\0') != std::string::npos) {
        return {};  // cut at the NUL it would name another file; the empty path names none
    }
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

bool FileSystemUtils::IsDirectory(const orska_wstring& in_path) {
    struct stat status;
    return stat(GetNativePath(in_path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool FileSystemUtils::CreateOneDirectory(const orska_wstring& in_path) {
    return mkdir(GetNativePath(in_path).c_str(), 0777) == 0 || errno == EEXIST;
}

bool FileSystemUtils::IsRelative(const orska_wstring& in_path) {
    const std::u16string_view path = in_path.GetView();
    const bool isRooted = !path.empty() && (path[0] == u'\\' || path[0] == u'/');
    const bool hasDrive = path.size() > 1 && path[1] == u':';
    return !isRooted && !hasDrive;
}

orska_wstring FileSystemUtils::GetModuleDirectory() {
    const NativePath own = GetOwnDirectory();
    const orska_wstring directory = orska_wstring().SetFromUtf8(own);
    // A text that does not convert back to the directory would name another one.
    return GetNativePath(directory) == own ? directory : orska_wstring();
}

orska_wstring FileSystemUtils::GetTempDirectory() {
    const char* named = secure_getenv("TMPDIR");
    orska_wstring directory;
    directory.SetFromUtf8(named != nullptr && named[0] != '\0' ? named : "/tmp",
                          orska_wstring::NUL_TERMINATED);
    return directory.GetLength() < MAX_PATH_LENGTH ? directory : orska_wstring();
}

}  // namespace Orska::Support
