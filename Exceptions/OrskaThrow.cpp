#include "Exceptions/OrskaThrow.h"

#include "tools/trace.h"

namespace Orska::Support {

void TraceThrow(const TraceSite& in_site, const char* in_text) { TraceLine(1, in_site, in_text); }

bool IsTraceOn(int in_level) { return TraceIsOn(in_level); }

void TraceLine(int in_level, const TraceSite& in_site, const char* in_text) {
    ORSKA_TRACE(in_level, in_site.m_function, in_site.m_source, in_site.m_line, "%s", in_text);
}

}  // namespace Orska::Support
