#include "PlatformAbstraction/strings/TextPool.h"

namespace Orska::Support {

namespace {

struct PoolCloser {
    PoolCloser() noexcept {}  // not constexpr: each thread constructs it, and registers its end
    ~PoolCloser() { ClosePool(); }
};

}  // namespace

void ClosePoolAtThreadEnd() noexcept { static thread_local const PoolCloser t_closer; }

}  // namespace Orska::Support
