#include "PlatformAbstraction/base/VerboseTrace.h"

#include <atomic>
#include <cstdio>

namespace Orska::Platform {

namespace {

// Process-wide: set by SetVerbose, read by TraceVerbose and platform start-up.
constinit std::atomic<bool> s_isVerbose = false;

}  // namespace

void SetVerbose(bool in_isVerbose) noexcept { s_isVerbose = in_isVerbose; }

bool IsVerbose() noexcept { return s_isVerbose; }

void TraceVerbose(const char* in_text) {
    if (s_isVerbose) {
        // One call: lines of several threads do not mix.
        std::fprintf(stderr, "%s\n", in_text);
        std::fflush(stderr);
    }
}

}  // namespace Orska::Platform
