#include "PlatformAbstraction/strings/TextPool.h"

namespace Orska::Support {

namespace {

struct PoolCloser {
    PoolCloser() noexcept {}  // not constant, so that the thread meets it when it comes here
    ~PoolCloser() { ClosePool(); }
};

}  // namespace

void ClosePoolAtThreadEnd() noexcept { static thread_local const PoolCloser s_closer; }

}  // namespace Orska::Support
