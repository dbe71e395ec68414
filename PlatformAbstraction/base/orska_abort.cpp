#include "PlatformAbstraction/base/orska_abort.h"

#include <cstdio>
#include <cstdlib>

namespace Orska::Support {

void orska_abort(const char* in_file, int in_line, const char* in_reason) noexcept {
    std::fprintf(stderr, "orska_abort() called from %s:%d for reason: %s", in_file, in_line,
                 in_reason);
    std::fflush(nullptr);
    std::abort();
}

}  // namespace Orska::Support
