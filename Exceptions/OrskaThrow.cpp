#include "Exceptions/OrskaThrow.h"

namespace Orska::Support {

// Tracing is absent until the trace tools exist, which behaves as tracing off.
void TraceThrow(const TraceSite& in_site, const char* in_text) { TraceLine(1, in_site, in_text); }

bool IsTraceOn(int /*in_level*/) { return false; }

void TraceLine(int /*in_level*/, const TraceSite& /*in_site*/, const char* /*in_text*/) {}

}  // namespace Orska::Support
