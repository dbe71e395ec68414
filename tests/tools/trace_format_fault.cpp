// Compiled by a test, never linked: with FAULT a string is passed for a number.
#include "tools/trace.h"

#ifdef FAULT
#define ARGUMENT "three"
#else
#define ARGUMENT 3
#endif

void TraceANumber() {
    Orska::trace(1, "F", "S", 0, "%d", ARGUMENT);
    ORSKA_TRACE(1, "F", "S", 0, "%d", ARGUMENT);
}
