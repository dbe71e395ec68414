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

}  // namespace
