/// Owns a descriptor of a file, socket or process (Linux).
#ifndef PLATFORMABSTRACTION_BASE_FILEDESCRIPTOR_H
#define PLATFORMABSTRACTION_BASE_FILEDESCRIPTOR_H

#include <unistd.h>

#include "PlatformAbstraction/base/OwnedHandle.h"
#include "tools/HighDescriptor.h"

namespace Orska::Support {

struct DescriptorKind {
    using Handle = int;
    static constexpr int NoHandle() noexcept { return -1; }
    static constexpr bool IsHandle(int in_handle) noexcept { return in_handle >= 0; }
    static void Close(int in_handle) noexcept { close(in_handle); }
};

using FileDescriptor = OwnedHandle<DescriptorKind>;

/// Owns a new descriptor, with a number above those of the standard streams.
/// @param in_descriptor  the result of the system call, -1 included
/// @return an empty owner, with errno set, if the call failed or no descriptor is free
inline FileDescriptor AboveStandardStreams(int in_descriptor) noexcept {
    return FileDescriptor(MoveAboveStandard(in_descriptor));
}

}  // namespace Orska::Support

#endif
