#include "PlatformAbstraction/OrskaUtility.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using Test::TraceCapture;

TEST(OrskaUtility, GivesTheSystemsText) {
    EXPECT_EQ(GetLastErrorText(ENOENT), L"No such file or directory");
    EXPECT_EQ(GetLastErrorTextImpl(EACCES, false), L"Permission denied");
    errno = EBUSY;
    EXPECT_EQ(GetLastErrorCode(), static_cast<std::uint32_t>(EBUSY));
}

TEST(OrskaUtility, FallsBackForACodeWithoutText) {
    const TraceCapture trace;
    EXPECT_EQ(GetLastErrorText(99999),
              L"FormatMessageW() failed while getting error message for error 99999: Invalid "
              L"argument");
    EXPECT_EQ(GetLastErrorTextImpl(0xFFFFFFFF, false),
              L"FormatMessageW() failed with error22while getting error message for error "
              L"4294967295");
    EXPECT_EQ(trace.GetText(),
              "GetLastErrorTextImpl:71\tFormatMessageW() failed with GetLastError() = 22 "
              "OrskaUtility_Windows\n"
              "GetLastErrorTextImpl:71\tFormatMessageW() failed with GetLastError() = 22 "
              "OrskaUtility_Windows\n");
}

TEST(OrskaUtility, NamesAnUnknownNtStatus) {
    EXPECT_EQ(GetNtStatusText(0xC0000005), L"Unknown NTSTATUS 3221225477");
}

}  // namespace
}  // namespace Orska::Support
