#include "VeltraneDialog/RunnableProgram.h"

#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "PlatformAbstraction/base/SystemError.h"

namespace Veltrane::ODBC {

namespace {

/// @return an absolute path without symbolic links; empty, with errno, on failure
std::string RealPath(const std::string& in_path) {
    const std::unique_ptr<char, void (*)(void*)> path(realpath(in_path.c_str(), nullptr), &free);
    return path != nullptr ? path.get() : "";
}

/// @param in_isStickyFine  accepts a sticky directory: others can add files but not replace ours
/// @return why others than root and this user could replace the file; empty if they cannot
std::string WhyWritableByOthers(const std::string& in_path, bool in_isStickyFine) {
    struct stat status {};
    if (stat(in_path.c_str(), &status) != 0) {
        return Orska::Support::DescribeLastError();
    }
    const bool isWritable =
        (status.st_mode & S_IWOTH) != 0 && !(in_isStickyFine && (status.st_mode & S_ISVTX) != 0);
    // In a build tree or a shared folder another owner is usual, and also owns the library.
    const bool isForeign =
        getauxval(AT_SECURE) != 0 && status.st_uid != 0 && status.st_uid != geteuid();
    return isWritable || isForeign ? "others can write to " + in_path : std::string();
}

/// @param in_program  an absolute path without symbolic links
std::string WhyReplaceable(const std::string& in_program) {
    std::string problem = WhyWritableByOthers(in_program, false);
    bool isParent = false;
    for (std::size_t end = in_program.rfind('/'); problem.empty() && end != 0;
         end = in_program.rfind('/', end - 1)) {
        problem = WhyWritableByOthers(in_program.substr(0, end), isParent);
        isParent = true;
    }
    return problem;
}

}  // namespace

std::string WhyNotRunnable(const std::string& in_program) {
    const std::string program = RealPath(in_program);
    struct stat status {};
    if (program.empty() || stat(program.c_str(), &status) != 0) {
        return Orska::Support::DescribeLastError();
    }
    if (!S_ISREG(status.st_mode) || access(program.c_str(), X_OK) != 0) {
        return "not a program";
    }
    return WhyReplaceable(program);
}

}  // namespace Veltrane::ODBC
