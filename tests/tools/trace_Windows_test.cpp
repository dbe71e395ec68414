// The trace's file on Windows.
#include <gtest/gtest.h>
#include <io.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/RaisedRights.h"
#include "tests/support/TraceCapture.h"
#include "tools/WindowsApi.h"
#include "tools/trace.h"

namespace {

using namespace Orska;
using Orska::Test::TraceCapture;
using Orska::Test::TraceOnStandardError;
using Orska::Test::TraceSetting;

TEST(trace, ANameThatNoCodePageHasComesFromTheSystem) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / L"orska \x65E5\x672C \x00FC \x0416.log";
    SetEnvironmentVariableW(L"TR4CE", (L"1:" + file.wstring()).c_str());
    ResetTrace();
    trace(1, "F", "S", 1, "x");
    const TraceSetting off(nullptr);
    std::ifstream stream(file);
    std::string line;
    EXPECT_TRUE(std::getline(stream, line));
    EXPECT_EQ(line, "F:1\tx S");
    stream.close();
    stream.open(file, std::ios::binary);
    EXPECT_TRUE(std::getline(stream, line));
    EXPECT_EQ(line, "F:1\tx S\r");  // as in any text file
    stream.close();
    EXPECT_TRUE(std::filesystem::remove(file));
}

TEST(trace, AProcessWithRaisedRightsIgnoresItsUsersFile) {
    const TraceCapture capture("1");
    {
        const Orska::Test::RaisedRights raised;
        ResetTrace();
        trace(1, "F", "S", 1, "raised");
    }
    ResetTrace();
    trace(1, "F", "S", 1, "x");
    EXPECT_EQ(capture.GetText(), "F:1\tx S\n");
}

TEST(trace, AMissingPipeMeansStandardError) {
    EXPECT_EQ(TraceOnStandardError("1:\\\\.\\pipe\\orska no such pipe"), "F:7\ttext S\n");
}

TEST(trace, TheFileIsNotInherited) {
    const TraceCapture capture("1");
    DWORD flags = HANDLE_FLAG_INHERIT;
    const intptr_t handle = _get_osfhandle(_fileno(GetTraceStream()));
    ASSERT_TRUE(GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags));
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0u);
}

}  // namespace
