#include <dlfcn.h>
#include <odbcinst.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "cli/examine/DriverManagerProbe.h"
#include "cli/examine/LibraryProbe.h"

namespace Veltrane::Cli {

namespace {

/// The file that holds a function of this process, symbolic links resolved.
std::string FindLibraryOf(const void* in_function) {
    Dl_info info{};
    if (dladdr(in_function, &info) == 0 || info.dli_fname == nullptr) return {};
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(info.dli_fname, error);
    return error ? info.dli_fname : real.string();
}

/// The installer library does not tell its version; the driver manager beside it has it as a text
/// of its own, for SQL_DM_VER.
std::string FindVersionBeside(const std::string& in_library) {
    const std::filesystem::path path =
        std::filesystem::path(in_library).parent_path() / "libodbc.so.2";
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t end = std::min(bytes.find('\0', at), bytes.size());
        const std::string text = bytes.substr(at, std::min<std::size_t>(end - at, 16));
        const bool isVersion = text.find_first_not_of("0123456789.") == std::string::npos &&
                               std::count(text.begin(), text.end(), '.') == 2;
        if (end - at <= 16 && isVersion && text.starts_with("2.")) return text;
        at = end + 1;
    }
    return {};
}

}  // namespace

DriverManagerInfo ProbeDriverManager() {
    DriverManagerInfo info;
    info.m_library = FindLibraryOf(reinterpret_cast<const void*>(&SQLConfigDataSource));
    info.m_hasLockedRequests = dlsym(RTLD_DEFAULT, "__SQLGetPrivateProfileStringNL") != nullptr;
    info.m_version = FindVersionBeside(info.m_library);
    info.m_hasIodbc = ProbeLibrary("libiodbcinst.so.2", {}).m_fault == LibraryFault::None;
    return info;
}

}  // namespace Veltrane::Cli
