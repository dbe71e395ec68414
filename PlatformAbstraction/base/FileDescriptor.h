/// Owns a descriptor of a file, socket or process (Linux).
#ifndef PLATFORMABSTRACTION_BASE_FILEDESCRIPTOR_H
#define PLATFORMABSTRACTION_BASE_FILEDESCRIPTOR_H

#include <unistd.h>

#include "PlatformAbstraction/base/OwnedHandle.h"

namespace Orska::Support {

struct DescriptorKind {
    using Handle = int;
    static constexpr int NoHandle() noexcept { return -1; }
    static constexpr bool IsHandle(int in_handle) noexcept { return in_handle >= 0; }
    static void Close(int in_handle) noexcept { close(in_handle); }
};

using FileDescriptor = OwnedHandle<DescriptorKind>;

}  // namespace Orska::Support

#endif
