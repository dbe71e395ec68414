#include "Exceptions/OrskaThrow.h"

namespace Orska::Support {

// Tracing is absent until the trace tools exist, which behaves as tracing off.
void TraceThrow(const TraceSite& /*in_site*/, const char* /*in_text*/) {}

}  // namespace Orska::Support
