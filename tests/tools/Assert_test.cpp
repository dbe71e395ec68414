#include "tools/Assert.h"

#include <gtest/gtest.h>

#include "tests/support/TraceCapture.h"

namespace {

using Orska::Test::TraceCapture;

TEST(Assert, ReportReachesStandardErrorAndTheTraceAndReturns) {
    const TraceCapture trace;
    testing::internal::CaptureStderr();
    Orska::ReportAssertionFailure("false", "Setup\\Source", 59);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Assertion failed: false, file Setup\\Source, line 59\n");
    EXPECT_EQ(trace.GetText(),
              "(?):59\tAssertion failed: false, file Setup\\Source, line 59 Source\n");
}

TEST(Assert, StopsTheProcessOnlyWhenTheConditionIsFalse) {
    ORSKA_ASSERT(1 + 1 == 2, "sum", "file", 7);
    EXPECT_DEATH(ORSKA_ASSERT(1 + 1 == 3, "sum", "file", 7),
                 "Assertion failed: sum, file file, line 7");
}

}  // namespace
