#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "PlatformAbstraction/base/SystemError.h"
#include "cli/system/FreeSpace.h"

namespace Veltrane::Cli {

std::string WhyNoRoomBeside(const std::string& in_path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(in_path, error);
    const std::string directory = (error ? std::filesystem::path(in_path) : real).parent_path();
    // Files are replaced by a new version that is made beside them.
    if (access(directory.c_str(), W_OK) != 0) {
        return in_path + ": cannot create a temporary file in " + directory + ": " +
               Orska::Support::DescribeLastError();
    }
    struct statvfs status {};
    struct stat file {};
    if (statvfs(directory.c_str(), &status) != 0) return {};
    const unsigned long long size =
        stat(in_path.c_str(), &file) == 0 ? static_cast<unsigned long long>(file.st_size) : 0;
    const unsigned long long room =
        static_cast<unsigned long long>(geteuid() == 0 ? status.f_bfree : status.f_bavail) *
        status.f_frsize;
    // A file system without a limit of its own reports no blocks at all.
    if (status.f_blocks != 0 && room <= size) {
        return in_path + ": cannot write: " + Orska::Support::DescribeSystemError(ENOSPC);
    }
    return {};
}

}  // namespace Veltrane::Cli
