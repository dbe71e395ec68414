/// Directories and paths.
///
/// A path is written with "/" or "\"; both separate, on both systems. On Linux the system gets the
/// path in UTF-8 with "/" for every "\", so that a path made from a setting such as ".\" works. Any
/// thread may call.
#ifndef PLATFORMABSTRACTION_FILESYSTEMUTILS_H
#define PLATFORMABSTRACTION_FILESYSTEMUTILS_H

#include <filesystem>

#include "../strings/orska_wstring.h"

namespace Orska::Support {

class FileSystemUtils {
public:
    /// Creates the directory that a file path names: the text up to the last separator. Only the
    /// last level is created; nothing is done when it exists or when the path has no separator.
    /// @throws ProductException "CannotOpenFile" with the path and the system's error text
    static void CreateFileDirectory(const orska_wstring& in_path);

    /// True for a path that is appended to a directory (of the INI file or the messages): it is
    /// empty, begins with "." or is relative for the system.
    static bool IsJoinedToDirectory(const orska_wstring& in_path);

    /// GetOwnDirectory as a text: absolute, with a separator at its end; empty when the system does
    /// not know it.
    static orska_wstring GetModuleDirectory();

    /// The system's directory for temporary files; NULL when there is none or its name has
    /// MAX_PATH_LENGTH code units or more.
    static orska_wstring GetTempDirectory();

    static constexpr int MAX_PATH_LENGTH = 260;

    /// The path in the form of the system's calls.
    static std::filesystem::path GetNativePath(const orska_wstring& in_path);

    static bool IsDirectory(const orska_wstring& in_path);

    /// Creates one directory; succeeds if it exists already.
    /// @return false on failure; GetLastErrorCode says why
    static bool CreateOneDirectory(const orska_wstring& in_path);

    /// True for a path that is relative for the system. A path is absolute when it begins with "\"
    /// or has ":" as its second character; on Linux also when it begins with "/".
    static bool IsRelative(const orska_wstring& in_path);
};

}  // namespace Orska::Support

#endif
