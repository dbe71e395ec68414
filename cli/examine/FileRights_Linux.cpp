#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "cli/examine/FileRights.h"

namespace Veltrane::Cli {

FileRights GetFileRights(const std::string& in_path) {
    FileRights rights;
    struct stat status {};
    if (stat(in_path.c_str(), &status) != 0) return rights;
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

}  // namespace Veltrane::Cli
