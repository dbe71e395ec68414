#include "VeltraneDialog/EditorSurroundings.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "PlatformAbstraction/base/FileDescriptor.h"
#include "PlatformAbstraction/base/OwnDirectory.h"
#include "PlatformAbstraction/base/SystemError.h"

#ifndef VELTRANE_EDITOR_DIRECTORY
#error "The build defines where editors are installed, relative to the library"
#endif

namespace Veltrane::ODBC {

namespace {

std::string SecureVariable(const char* in_name) {
    const char* const value = secure_getenv(in_name);
    return value != nullptr ? value : "";
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

}  // namespace Veltrane::ODBC
