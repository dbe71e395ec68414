#include "PlatformAbstraction/base/OwnDirectory.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace Orska::Support {

namespace {

/// The path of the module's file, or an empty one. The file name can be wrong for a program that
/// was replaced ("... (deleted)"); the directory is right.
struct ModuleFile {
    char m_path[PATH_MAX] = {};

    ModuleFile() noexcept {
        if (!FindLibrary() && !FindProgram()) {
            m_path[0] = '\0';
        }
    }

private:
    bool FindLibrary() noexcept {
        Dl_info info;
        void* extra = nullptr;
        if (dladdr1(this, &info, &extra, RTLD_DL_LINKMAP) == 0 || extra == nullptr) {
            return false;
        }
        // The program itself has no name here; dladdr would return argv[0], which can be anything.
        const char* name = static_cast<const link_map*>(extra)->l_name;
        return *name != '\0' && realpath(name, m_path) != nullptr;
    }

    bool FindProgram() noexcept {
        const ssize_t length = readlink("/proc/self/exe", m_path, sizeof m_path - 1);
        if (length > 0 && m_path[0] == '/') {
            m_path[length] = '\0';
            return true;
        }
        // Without /proc: the name passed to exec, which is still right at the start.
        const auto* name = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
        return name != nullptr && realpath(name, m_path) != nullptr;
    }
};

const ModuleFile& GetModuleFile() noexcept {
    // Process-wide: set when the module is loaded, read by GetOwnDirectory.
    static const ModuleFile s_file;
    return s_file;
}

[[maybe_unused]] const ModuleFile& s_whenLoaded = GetModuleFile();

}  // namespace

NativePath GetOwnDirectory() {
    const std::string_view file = GetModuleFile().m_path;
    return std::string(file.substr(0, file.rfind('/') + 1));
}

}  // namespace Orska::Support
