/// Keeps our files out of the places of standard input, output and error (Linux).
#ifndef TOOLS_HIGHDESCRIPTOR_H
#define TOOLS_HIGHDESCRIPTOR_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Orska {

/// A host may have closed 0 to 2; what is opened next gets one of them, and all that the host then
/// prints.
/// @param in_descriptor  as open gave it; closed if it has to be replaced
/// @return one above 2 that is closed on exec, or -1 with errno
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
