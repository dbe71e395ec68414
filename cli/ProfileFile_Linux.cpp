#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/OdbcIniText.h"
#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

std::string ProfilePath(Scope in_scope) {
    return in_scope == Scope::User ? ODBC::GetUserIniPath() : ODBC::GetSystemIniPath();
}

std::string DescribeUnreadable(Scope in_scope) {
    const std::string path = ProfilePath(in_scope);
    ODBC::OdbcIniFile file(path);
    std::string bytes;
    struct stat ignored {};
    if (!file.Read(bytes, ignored) && file.GetFailure().m_error != ENOENT) {
        return file.GetFailure().Describe();
    }
    if (!ODBC::OdbcIniText(std::move(bytes)).IsReadable()) {
        return path + ": there is text before the first section";
    }
    // The driver manager opens the user's file for writing, and makes it when there is none.
    const std::string problem = DescribeUnwritable(path);
    return problem.empty() ? path + ": the driver manager cannot read it" : problem;
}

std::string DescribeUnwritable(const std::string& in_path) {
    if (access(in_path.c_str(), W_OK) == 0) {
        return {};
    }
    if (errno != ENOENT) {
        return in_path + ": cannot write: " + std::strerror(errno);
    }
    const std::size_t slash = in_path.find_last_of('/');
    const std::string folder = slash == 0 || slash == std::string::npos
                                   ? std::string(slash == 0 ? "/" : ".")
                                   : in_path.substr(0, slash);
    if (access(folder.c_str(), W_OK | X_OK) == 0) {
        return {};
    }
    return in_path + ": cannot create it in " + folder + ": " + std::strerror(errno);
}

}  // namespace Veltrane::Cli
