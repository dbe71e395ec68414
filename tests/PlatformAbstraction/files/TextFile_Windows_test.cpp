// Names on Windows that are not files.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "PlatformAbstraction/files/OrskaUtility.h"
#include "PlatformAbstraction/files/TextFile.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/ThrownMessage.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {
namespace {

using Test::TemporaryDirectory;
using Test::ThrownMessage;

TEST(TextFile, RefusesEverythingButFiles) {
    const TemporaryDirectory directory;
    const std::string pipe = "\\\\.\\pipe\\orska." + std::to_string(GetCurrentProcessId());
    const HANDLE server =
        CreateNamedPipeA(pipe.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 0, 0, 0, nullptr);
    ASSERT_NE(server, INVALID_HANDLE_VALUE);
    const std::string folder = directory.GetPath("folder");
    std::filesystem::create_directory(folder);
    const struct {
        const char* m_name;
        std::string m_file;
        std::int32_t m_mode;
        DWORD m_reason;
    } cases[] = {
        {"directory, read", folder, 1, ERROR_ACCESS_DENIED},
        {"pipe, read", pipe, 1, ERROR_NOT_SUPPORTED},
        {"wildcard", directory.GetPath("*"), 1, ERROR_INVALID_NAME},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(ThrownMessage([&] { TextFile opened(row.m_file, row.m_mode); }),
                  "CannotOpenFile(" + row.m_file + ", " +
                      GetLastErrorText(row.m_reason).GetAsUtf8() + ")");
    }
    CloseHandle(server);
    for (const wchar_t* name : {L"NUL", L"nul"}) {
        TextFile null(name, TextFile::MODE_READ_WRITE);
        EXPECT_EQ(null.ReadByte(), 255);
    }
}

}  // namespace
}  // namespace Orska::Support
