#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/OdbcIniText.h"
#include "cli/DriverManager.h"
#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

namespace {

std::string FolderOf(const std::string& in_path) {
    const std::size_t slash = in_path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : in_path.substr(0, slash);
}

}  // namespace

std::string ProfilePath(Scope in_scope) {
    return in_scope == Scope::User ? ODBC::GetUserIniPath() : ODBC::GetSystemIniPath();
}

std::string ReadProfileFile(Scope in_scope) {
    const std::string path = ProfilePath(in_scope);
    ODBC::OdbcIniFile file(path);
    std::string bytes;
    struct stat ignored {};
    if (!file.Read(bytes, ignored)) {
        if (file.GetFailure().m_error != ENOENT) {
            throw InstallerError(file.GetFailure().Describe());
        }
        if (access(FolderOf(path).c_str(), F_OK) != 0) {
            throw InstallerError(DescribeUnwritable(path));
        }
        return {};
    }
    if (!ODBC::OdbcIniText(bytes).IsReadable()) {
        throw InstallerError(path + ": there is text before the first section");
    }
    return bytes;
}

bool IsReadableByOthers(const std::string& in_path) {
    struct stat status {};
    return stat(in_path.c_str(), &status) == 0 && (status.st_mode & (S_IRGRP | S_IROTH)) != 0;
}

std::string DescribeUnwritable(const std::string& in_path) {
    if (access(in_path.c_str(), W_OK) == 0) {
        return {};
    }
    if (errno != ENOENT) {
        return in_path + ": cannot write: " + std::strerror(errno);
    }
    const std::string folder = FolderOf(in_path);
    if (access(folder.c_str(), W_OK | X_OK) == 0) {
        return {};
    }
    return in_path + ": cannot create it in " + folder + ": " + std::strerror(errno);
}

}  // namespace Veltrane::Cli
