#include "tools/Assert.h"

#include <cstdio>
#include <cstdlib>

#include "tools/trace.h"

namespace Orska {

void ReportAssertionFailure(const char* in_expression, const char* in_file, int in_line) noexcept {
    char text[512];
    std::snprintf(text, sizeof text, "Assertion failed: %s, file %s, line %d", in_expression,
                  in_file, in_line);
    ORSKA_TRACE(1, nullptr, in_file, in_line, "%s", text);
    std::fprintf(stderr, "%s\n", text);
}

void StopInAssertion(const char* in_expression, const char* in_file, int in_line) noexcept {
    ReportAssertionFailure(in_expression, in_file, in_line);
    std::abort();
}

}  // namespace Orska
