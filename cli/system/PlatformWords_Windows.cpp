#include "cli/system/PlatformWords.h"

#include "PlatformAbstraction/base/WindowsHandle.h"
#include "VeltraneDialog/WideText.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

const PlatformWords PLATFORM_WORDS = {
    "C:\\path\\to\\VeltraneSetup.dll",
    "C:\\path\\to\\driver.dll",
    "has to begin with a drive and a backslash, or with two backslashes",
    ", or put it into the folder of the library that needs it.",
    "A library that it needs is too old or a different one: bring both to matching versions.",
    "Repair what the system reports, and install the library again.",
    "Give yourself the right to write the key.",
    "It is a part of Windows: repair the installation.",
    false,
    true,
};

bool IsAbsolutePath(const std::string& in_path) {
    // The library does not know names of servers.
    return in_path.starts_with("\\\\") || ToPath(in_path).is_absolute();
}

bool IsThere(const std::string& in_path) {
    HKEY root = nullptr;
    const std::size_t end = in_path.find('\\');
    if (in_path.starts_with("HKEY_CURRENT_USER\\")) root = HKEY_CURRENT_USER;
    if (in_path.starts_with("HKEY_LOCAL_MACHINE\\")) root = HKEY_LOCAL_MACHINE;
    if (root == nullptr) {
        return GetFileAttributesW(ODBC::ToWide(in_path).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    const std::wstring path = ODBC::ToWide(in_path.substr(end + 1));
    LONG error = ERROR_SUCCESS;
    return Orska::Support::OpenRegistryKey(root, path.c_str(), KEY_READ, error).IsOpen();
}

}  // namespace Veltrane::Cli
