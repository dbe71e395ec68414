/// Stops the process when an invariant is broken. Prints and aborts; never throws. Any thread may
/// call it.
#ifndef PLATFORMABSTRACTION_ORSKA_ABORT_H
#define PLATFORMABSTRACTION_ORSKA_ABORT_H

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

/// Writes "orska_abort() called from %s:%d for reason: %s" to standard error, without a line end,
/// flushes the output streams that no other thread keeps locked (of the streams that the host
/// opened, those newer than a locked one) and ends the process with abort().
/// @param in_file    source name as people search for it; not derived from the file on disk
/// @param in_reason  written as it is, not as a format
[[noreturn]] void orska_abort(const char* in_file, int in_line, const char* in_reason) noexcept;

}  // namespace Orska::Support

#endif
