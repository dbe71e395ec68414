#include "PlatformAbstraction/files/FileSystemUtils.h"

#include <shlwapi.h>

#include <string>

#include "PlatformAbstraction/base/OwnDirectory.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

std::filesystem::path FileSystemUtils::GetNativePath(const orska_wstring& in_path) {
    const std::u16string_view path = in_path.GetView();
    if (path.find(u'\0') != std::u16string_view::npos) {
        return {};  // cut at the NUL it would name another file; the empty path names none
    }
    return std::wstring(path.begin(), path.end());
}

bool FileSystemUtils::IsDirectory(const orska_wstring& in_path) {
    const DWORD attributes = GetFileAttributesW(GetNativePath(in_path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool FileSystemUtils::CreateOneDirectory(const orska_wstring& in_path) {
    return CreateDirectoryW(GetNativePath(in_path).c_str(), nullptr) ||
           GetLastError() == ERROR_ALREADY_EXISTS;
}

bool FileSystemUtils::IsRelative(const orska_wstring& in_path) {
    return PathIsRelativeW(GetNativePath(in_path).c_str()) != FALSE;
}

orska_wstring FileSystemUtils::GetModuleDirectory() { return orska_wstring(GetOwnDirectory()); }

orska_wstring FileSystemUtils::GetTempDirectory() {
    wchar_t directory[MAX_PATH_LENGTH];
    const DWORD length = GetTempPathW(MAX_PATH_LENGTH, directory);
    return length != 0 && length < MAX_PATH_LENGTH ? orska_wstring(directory, length)
                                                   : orska_wstring();
}

}  // namespace Orska::Support
