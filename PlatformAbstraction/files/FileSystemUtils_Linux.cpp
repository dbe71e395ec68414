#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

#include "PlatformAbstraction/files/FileSystemUtils.h"

namespace Orska::Support {

namespace {

/// The file that the code of this library was loaded from.
const char* FindModuleFile() {
    static const char s_anchor = 0;
    Dl_info info;
    void* extra = nullptr;
    if (dladdr1(&s_anchor, &info, &extra, RTLD_DL_LINKMAP) == 0) {
        return "/proc/self/exe";
    }
    // The program itself has no name here; dladdr would give argv[0], which may be anything.
    const link_map* module = static_cast<const link_map*>(extra);
    return module->l_name[0] == '\0' ? "/proc/self/exe" : module->l_name;
}

}  // namespace

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
    const std::unique_ptr<char, decltype(&std::free)> file(realpath(FindModuleFile(), nullptr),
                                                           &std::free);
    orska_wstring directory;
    if (file != nullptr) {
        const std::string path = file.get();
        directory.SetFromUtf8(path.substr(0, path.rfind('/') + 1));
    }
    return directory;
}

orska_wstring FileSystemUtils::GetTempDirectory() {
    const char* named = secure_getenv("TMPDIR");
    orska_wstring directory;
    directory.SetFromUtf8(named != nullptr && named[0] != '\0' ? named : "/tmp",
                          orska_wstring::NUL_TERMINATED);
    return directory.GetLength() < MAX_PATH_LENGTH ? directory : orska_wstring();
}

}  // namespace Orska::Support
