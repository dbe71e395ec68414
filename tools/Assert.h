/// Assertions that stay in every build. The expression, the file and the line are written out at
/// the site and are the same on every system.
///
/// A failed assertion is reported on standard error, where it is seen without any setting, and in
/// the trace at level 1. Whether the process may go on is the site's decision: a buffer whose
/// offsets are wrong stops it, since going on would write outside of the block; a site with a safe
/// answer only reports.
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

/// Stops the process when the condition, whose text is given as it is to be reported, is false.
#define ORSKA_ASSERT(in_condition, in_text, in_file, in_line)    \
    do {                                                         \
        if (!(in_condition)) {                                   \
            ::Orska::StopInAssertion(in_text, in_file, in_line); \
        }                                                        \
    } while (false)

#endif
