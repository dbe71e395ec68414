/// Owns a descriptor of a file, socket or process (Linux).
#ifndef PLATFORMABSTRACTION_BASE_FILEDESCRIPTOR_H
#define PLATFORMABSTRACTION_BASE_FILEDESCRIPTOR_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "PlatformAbstraction/base/OwnedHandle.h"

namespace Orska::Support {

struct DescriptorKind {
    using Handle = int;
    static constexpr int NoHandle() noexcept { return -1; }
    static constexpr bool IsHandle(int in_handle) noexcept { return in_handle >= 0; }
    static void Close(int in_handle) noexcept { close(in_handle); }
};

using FileDescriptor = OwnedHandle<DescriptorKind>;

/// Takes a new descriptor and gives it a number above those of the standard streams. A host may
/// have closed these, and what is printed there would go into a file of ours that has such a
/// number.
/// @param in_descriptor  what the system's call gave, also when it failed
/// @return none, with errno, where there was none or no more can be had
inline FileDescriptor AboveStandardStreams(int in_descriptor) noexcept {
    if (in_descriptor < 0 || in_descriptor > STDERR_FILENO) return FileDescriptor(in_descriptor);
    const int moved = fcntl(in_descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(in_descriptor);
    errno = error;
    return FileDescriptor(moved);
}

}  // namespace Orska::Support

#endif
