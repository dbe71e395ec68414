/// Assertions that are checked in every build. Expression, file and line are written at the site
/// and are the same on every system.
///
/// A failed assertion is reported on standard error, which needs no setting, and in the trace at
/// level 1. The site decides whether the process continues: a buffer with wrong offsets stops it,
/// because it would write outside of its block; a site with a safe fallback only reports.
#ifndef TOOLS_ASSERT_H
#define TOOLS_ASSERT_H

#include "RequireCpp20.h"

namespace Orska {

/// Writes "Assertion failed: expression, file source, line 59" and returns.
void ReportAssertionFailure(const char* in_expression, const char* in_file, int in_line) noexcept;

/// Reports, then aborts the process.
[[noreturn]] void StopInAssertion(const char* in_expression, const char* in_file,
                                  int in_line) noexcept;

}  // namespace Orska

/// Stops the process if the condition is false. in_text is the condition as it is reported.
#define ORSKA_ASSERT(in_condition, in_text, in_file, in_line)    \
    do {                                                         \
        if (!(in_condition)) {                                   \
            ::Orska::StopInAssertion(in_text, in_file, in_line); \
        }                                                        \
    } while (false)

#endif
