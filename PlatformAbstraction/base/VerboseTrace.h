/// The verbose trace, which platform start-up turns on to show its steps.
#ifndef PLATFORMABSTRACTION_BASE_VERBOSETRACE_H
#define PLATFORMABSTRACTION_BASE_VERBOSETRACE_H

#include "../../tools/RequireCpp20.h"

namespace Orska::Platform {

/// Turns the trace on or off. Any thread may call.
void SetVerbose(bool in_isVerbose) noexcept;
bool IsVerbose() noexcept;

/// Writes the text and a line end to standard error when the verbose trace is on. A line that
/// cannot be written is lost.
void TraceVerbose(const char* in_text);
/// The same, whether it is on or not.
void WriteVerboseLine(const char* in_text);

}  // namespace Orska::Platform

#endif
