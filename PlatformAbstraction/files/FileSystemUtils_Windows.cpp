#include "PlatformAbstraction/files/FileSystemUtils.h"

#include <shlwapi.h>

#include <string>

#include "tools/WindowsApi.h"

namespace Orska::Support {

namespace {

/// The module (library or program) that holds this code; null when the system does not tell.
HMODULE FindModule() {
    static const char s_anchor = 0;
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const wchar_t*>(&s_anchor), &module);
    return module;
}

/// The file of a module, of any length; empty when the system does not tell.
std::wstring GetModuleFile(HMODULE in_module) {
    constexpr std::size_t LONGEST_PATH = 32'768;
    std::wstring file(FileSystemUtils::MAX_PATH_LENGTH, L'\0');
    for (;;) {
        const DWORD size = static_cast<DWORD>(file.size());
        const DWORD length = GetModuleFileNameW(in_module, file.data(), size);
        if (length < size || size >= LONGEST_PATH) {
            file.resize(length);
            return file;
        }
        file.resize(file.size() * 2);
    }
}

}  // namespace

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

orska_wstring FileSystemUtils::GetModuleDirectory() {
    const std::wstring file = GetModuleFile(FindModule());
    return orska_wstring(file.substr(0, file.rfind(L'\\') + 1));
}

orska_wstring FileSystemUtils::GetTempDirectory() {
    wchar_t directory[MAX_PATH_LENGTH];
    const DWORD length = GetTempPathW(MAX_PATH_LENGTH, directory);
    return length != 0 && length < MAX_PATH_LENGTH ? orska_wstring(directory, length)
                                                   : orska_wstring();
}

}  // namespace Orska::Support
