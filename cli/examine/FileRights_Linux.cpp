#include <sys/stat.h>
#include <unistd.h>

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
    const unsigned mode = status.st_mode & 07777;
    for (int shift = 9; shift >= 0; shift -= 3) {
        rights.m_mode += static_cast<char>('0' + ((mode >> shift) & 7));
    }
    return rights;
}

bool IsAdministrator() { return geteuid() == 0; }

}  // namespace Veltrane::Cli
