#include "PlatformAbstraction/base/VerboseTrace.h"

#include <atomic>
#include <cstdio>

#include "tools/LineText.h"
#include "tools/TracePlatform.h"

namespace Orska::Platform {

namespace {

// Process-wide: set by SetVerbose, read by TraceVerbose and platform start-up.
constinit std::atomic<bool> s_isVerbose = false;

}  // namespace

void SetVerbose(bool in_isVerbose) noexcept { s_isVerbose = in_isVerbose; }

bool IsVerbose() noexcept { return s_isVerbose; }

void TraceVerbose(const char* in_text) {
    if (s_isVerbose) {
        WriteVerboseLine(in_text);
    }
}

void WriteVerboseLine(const char* in_text) {
    // One call, so lines of several threads do not mix.
    LineText line;
    line.Append(in_text);
    line.End();
    WriteTraceLine(stderr, line.GetData(), line.GetSize(), true);
}

}  // namespace Orska::Platform
