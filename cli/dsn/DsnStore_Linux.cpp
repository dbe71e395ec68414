#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/SystemCalls.h"
#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

namespace {

/// Returns path and reason if a new version of the file has no room, or cannot be written, in its
/// file system; otherwise empty.
std::string WhyNoRoomBeside(const std::string& in_path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(in_path, error);
    const std::string directory = (error ? std::filesystem::path(in_path) : real).parent_path();
    // A new version of the file is made beside it and replaces it.
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
    // Some file systems report no blocks, because they have no limit.
    if (status.f_blocks != 0 && room <= size) {
        return in_path + ": cannot write: " + Orska::Support::DescribeSystemError(ENOSPC);
    }
    return {};
}

}  // namespace

std::string DsnStore::WhyNotWritable() const {
    const std::string reason = m_profile.WhyNotWritable();
    return reason.empty() ? WhyNoRoomBeside(GetPath()) : reason;
}

/// The record is beside the file, not beside a link to it.
std::string DsnStore::FindLeftRecord() const {
    const std::string real = ODBC::SystemCalls::RealPath(GetPath().c_str());
    const std::string path = (real.empty() ? GetPath() : real) + ".veltrane-dsn-change";
    struct stat status {};
    const bool isLeft = ODBC::SystemCalls::Stat(path.c_str(), status, false) == 0;
    return isLeft && status.st_size > 0 ? path : std::string();
}

std::vector<std::string> DsnStore::FindLeftFiles() const {
    return ODBC::OdbcIniFile::FindLeftFiles(GetPath());
}

}  // namespace Veltrane::Cli
