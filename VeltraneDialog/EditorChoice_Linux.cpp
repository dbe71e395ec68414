#include <fcntl.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "PlatformAbstraction/base/FileDescriptor.h"
#include "PlatformAbstraction/base/OwnDirectory.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/EditorChoice.h"

#ifndef VELTRANE_EDITOR_DIRECTORY
#error "The build defines where editors are installed, relative to the library"
#endif

namespace Veltrane::ODBC {

namespace {

std::string SecureVariable(const char* in_name) {
    const char* const value = secure_getenv(in_name);
    return value != nullptr ? value : "";
}

/// @return an absolute path without symbolic links; empty, with errno, on failure
std::string RealPath(const std::string& in_path) {
    const std::unique_ptr<char, void (*)(void*)> path(realpath(in_path.c_str(), nullptr), &free);
    return path != nullptr ? path.get() : "";
}

std::string DirectoryOf(const std::string& in_path) {
    return in_path.substr(0, in_path.rfind('/'));
}

std::string TerminalProblem() {
    const Orska::Support::FileDescriptor terminal =
        Orska::Support::AboveStandardStreams(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!terminal.IsOpen()) {
        return std::string("/dev/tty: ") + Orska::Support::DescribeLastError();
    }
    // A background program is stopped when it uses its terminal, and would never return.
    if (tcgetpgrp(terminal.Get()) != getpgrp()) {
        return "the program runs in the background of its terminal";
    }
    return {};
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

std::string WhyReplaceable(const std::string& in_program) {
    std::string problem = WhyWritableByOthers(in_program, false);
    std::string directory = DirectoryOf(in_program);
    bool isParent = false;
    while (problem.empty() && !directory.empty()) {
        problem = WhyWritableByOthers(directory, isParent);
        directory = DirectoryOf(directory);
        isParent = true;
    }
    return problem;
}

}  // namespace

EditorSurroundings LookAroundForEditors() {
    EditorSurroundings surroundings;
    surroundings.m_wish = SecureVariable("VELTRANE_DSN_EDITOR");
    surroundings.m_hasDisplay =
        !SecureVariable("DISPLAY").empty() || !SecureVariable("WAYLAND_DISPLAY").empty();
    surroundings.m_terminalProblem = TerminalProblem();
    const std::string own = DirectoryOf(Orska::Support::GetOwnDirectory());
    if (!own.empty()) {
        // Where the editors are installed, from the library and from a program; the build tree of
        // the library; the build tree of a program.
        const std::string parent = DirectoryOf(own);
        surroundings.m_directories = {own + "/" VELTRANE_EDITOR_DIRECTORY,
                                      own + "/" VELTRANE_EDITOR_DIRECTORY_OF_PROGRAMS,
                                      parent + "/bin", own};
    }
    return surroundings;
}

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
