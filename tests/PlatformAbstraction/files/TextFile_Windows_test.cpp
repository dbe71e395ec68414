// What Windows has by the name of a file and is none, and its locks.
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

TEST(TextFile, RefusesOtherThanFiles) {
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

/// Whether a byte can be locked now by somebody who has the file open himself.
bool IsFree(const std::string& in_path, DWORD in_offset) {
    const HANDLE handle =
        CreateFileA(in_path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    OVERLAPPED start = {};
    start.Offset = in_offset;
    const BOOL isFree =
        LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start);
    CloseHandle(handle);
    return isFree != FALSE;
}

TEST(TextFileLock, TakesTheRangeOfTheFileAndReleasesIt) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    for (const std::int32_t mode : {1, 3, 4, 6}) {
        SCOPED_TRACE(mode);
        {
            TextFile file(path, mode);
            file.Lock();
            EXPECT_FALSE(IsFree(path, 0));
            EXPECT_FALSE(IsFree(path, 9));
            EXPECT_TRUE(IsFree(path, 10));
            file.Unlock();
            EXPECT_TRUE(IsFree(path, 0));
            file.Lock();
            file.Lock();  // waits for nobody
            EXPECT_FALSE(IsFree(path, 0));
        }
        EXPECT_TRUE(IsFree(path, 0));
    }
}

TEST(TextFileLock, UnlockLeavesNothingOfAFileThatShrankOrGrew) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    TextFile file(path, TextFile::MODE_READ_WRITE);
    file.Lock();
    file.Clear();
    file.Unlock();
    EXPECT_TRUE(IsFree(path, 0));
    EXPECT_TRUE(IsFree(path, 9));
    file.Lock();  // one byte of an empty file
    EXPECT_FALSE(IsFree(path, 0));
    EXPECT_TRUE(IsFree(path, 1));
    file.Write("abc", 3);
    file.Unlock();
    EXPECT_TRUE(IsFree(path, 0));
}

}  // namespace
}  // namespace Orska::Support
