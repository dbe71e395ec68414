/// Keeps our files off standard input, output and error (Linux).
#ifndef TOOLS_HIGHDESCRIPTOR_H
#define TOOLS_HIGHDESCRIPTOR_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Orska {

/// A host can have closed 0 to 2. A file opened next gets one of them, and the host then prints
/// into it.
/// @param in_descriptor  from open; closed if it has to be replaced
/// @return a descriptor above 2 that is closed on exec, or -1 with errno
inline int MoveAboveStandard(int in_descriptor) noexcept {
    if (in_descriptor < 0 || in_descriptor > STDERR_FILENO) {
        return in_descriptor;
    }
    const int high = fcntl(in_descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(in_descriptor);
    errno = error;
    return high;
}

}  // namespace Orska

#endif
