#include "PlatformAbstraction/files/OrskaUtility.h"

#include <gtest/gtest.h>

#include <string>
#include <system_error>

#include "tests/support/TestSystem.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using Test::SYSTEM_ERRORS;
using Test::TraceCapture;

TEST(OrskaUtility, ReturnsTheSystemsText) {
    for (const std::uint32_t code : {SYSTEM_ERRORS.m_noSuchFile, SYSTEM_ERRORS.m_accessDenied}) {
        const std::string expected = std::system_category().message(static_cast<int>(code));
        ASSERT_GT(expected.size(), 8u);
        // The library's own form has no line end.
        EXPECT_EQ(GetLastErrorText(code).GetAsUtf8().substr(0, expected.size()), expected);
        EXPECT_EQ(GetLastErrorTextImpl(code, false), GetLastErrorText(code));
    }
}

TEST(OrskaUtility, FallsBackForACodeWithoutText) {
    const std::string second = std::to_string(SYSTEM_ERRORS.m_noText);
    const std::string line =
        "GetLastErrorTextImpl:71\tFormatMessageW() failed with GetLastError() = " + second +
        " OrskaUtility_Windows\n";
    const TraceCapture trace;
    EXPECT_EQ(GetLastErrorText(99999).GetAsUtf8(),
              "FormatMessageW() failed while getting error message for error 99999: " +
                  GetLastErrorText(SYSTEM_ERRORS.m_noText).GetAsUtf8());
    EXPECT_EQ(GetLastErrorTextImpl(0xFFFFFFFF, false).GetAsUtf8(),
              "FormatMessageW() failed with error" + second +
                  "while getting error message for error 4294967295");
    EXPECT_EQ(trace.GetText(), line + line);
}

TEST(OrskaUtility, NamesAnUnknownNtStatus) {
    EXPECT_EQ(GetNtStatusText(0xE0000123), L"Unknown NTSTATUS 3758096675");
}

}  // namespace
}  // namespace Orska::Support
