#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/SystemCalls.h"
#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

std::string DsnStore::WhyNotWritable() const {
    const std::string reason = Profile::WhyNotWritable();
    if (!reason.empty()) return reason;
    // A new version of the file is made beside it and replaces it.
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(GetPath(), error);
    const std::string directory = (error ? std::filesystem::path(GetPath()) : real).parent_path();
    if (access(directory.c_str(), W_OK) == 0) return {};
    return GetPath() + ": cannot create a temporary file in " + directory + ": " +
           Orska::Support::DescribeLastError();
}

FileRights DsnStore::GetRights() const {
    FileRights rights;
    struct stat status {};
    if (stat(GetPath().c_str(), &status) != 0) return rights;
    rights.m_isReadByOthers = (status.st_mode & S_IROTH) != 0;
    // With an access list these bits are its mask, so users in the list count too.
    rights.m_isReadByGroup = (status.st_mode & S_IRGRP) != 0;
    rights.m_isWrittenByOthers = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    char mode[8];
    std::snprintf(mode, sizeof mode, "%04o", status.st_mode & 07777);
    rights.m_mode = mode;
    return rights;
}

bool IsAdministrator() { return geteuid() == 0; }

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
