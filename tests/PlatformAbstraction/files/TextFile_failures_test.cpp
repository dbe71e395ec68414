// Files whose system calls fail, on a handle in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "PlatformAbstraction/files/OrskaUtility.h"
#include "PlatformAbstraction/files/TextFile.h"
#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"
#include "tests/support/SettingText.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using Test::MakeSection;
using Test::SYSTEM_ERRORS;
using Test::ThrownMessage;
using Test::ToText;
using Test::TraceCapture;

/// The contents that every handle uses, and the calls that fail. One object for the process.
struct FakeFile {
    std::string m_content;
    std::size_t m_position = 0;
    bool m_isOpen = false;
    bool m_isLocked = false;
    bool m_openFails = false;
    bool m_seekFails = false;
    bool m_setEndFails = false;
    /// Reads fail from this position on.
    std::size_t m_readFailsAt = std::string::npos;
    /// Writes fail from this position on.
    std::size_t m_writeFailsAt = std::string::npos;

    static FakeFile& Get() {
        static FakeFile s_file;
        return s_file;
    }
};

bool Fail(bool in_fails) {
    if (in_fails) {
        Test::SetLastErrorCode(SYSTEM_ERRORS.m_inputOutput);
    }
    return in_fails;
}

}  // namespace

// Linked instead of the system's body.
bool FileHandle::Open(const orska_wstring&, const FileOpenArguments&) {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_openFails)) {
        return false;
    }
    file.m_position = 0;
    file.m_isOpen = true;
    m_handle = 1;
    return true;
}

void FileHandle::Close() noexcept {
    if (IsOpen()) {
        FakeFile::Get().m_isOpen = false;
        m_handle = INVALID;
    }
}

std::int64_t FileHandle::Read(void* out_buffer, std::size_t in_count) {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_position >= file.m_readFailsAt)) {
        return -1;
    }
    const std::size_t end = std::min(file.m_content.size(), file.m_readFailsAt);
    const std::size_t count = std::min(in_count, end - std::min(file.m_position, end));
    std::memcpy(out_buffer, file.m_content.data() + file.m_position, count);
    file.m_position += count;
    return static_cast<std::int64_t>(count);
}

std::size_t FileHandle::Write(const void* in_buffer, std::size_t in_count) {
    FakeFile& file = FakeFile::Get();
    const std::size_t room = file.m_writeFailsAt - std::min(file.m_position, file.m_writeFailsAt);
    const std::size_t count = std::min(in_count, room);
    file.m_content.resize(std::max(file.m_content.size(), file.m_position + count));
    std::memcpy(file.m_content.data() + file.m_position, in_buffer, count);
    file.m_position += count;
    return count;
}

std::int64_t FileHandle::Seek(std::int64_t in_offset, Origin in_origin) {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_seekFails)) {
        return -1;
    }
    const std::size_t base = in_origin == Origin::START ? 0
                             : in_origin == Origin::END ? file.m_content.size()
                                                        : file.m_position;
    file.m_position = base + static_cast<std::size_t>(in_offset);
    return static_cast<std::int64_t>(file.m_position);
}

bool FileHandle::SetEnd() {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_setEndFails)) {
        return false;
    }
    file.m_content.resize(file.m_position);
    return true;
}

bool FileHandle::Flush() { return true; }

std::uint64_t FileHandle::GetSize() const { return FakeFile::Get().m_content.size(); }

void FileHandle::Lock(std::uint32_t) { FakeFile::Get().m_isLocked = true; }

void FileHandle::Unlock(std::uint32_t) { FakeFile::Get().m_isLocked = false; }

namespace {

TEST(TextFileFailures, AnAppendPositionThatCannotBeSetClosesTheFile) {
    FakeFile::Get().m_seekFails = true;
    const TraceCapture trace;
    EXPECT_EQ(ThrownMessage([] { TextFile file(L"log.txt", TextFile::MODE_APPEND); }),
              "CannotSetFilePosition");
    EXPECT_FALSE(FakeFile::Get().m_isOpen);
    EXPECT_EQ(trace.GetText(),
              "Orska::Support::TextFile::TextFile:161\tSetFilePointerEx() failed for file "
              "'log.txt': " +
                  GetLastErrorText(SYSTEM_ERRORS.m_inputOutput).GetAsUtf8() +
                  " TextFile_Windows\n"
                  "Orska::Support::TextFile::TextFile:163\tThrowing: "
                  "ProductException(L\"CannotSetFilePosition\") TextFile_Windows\n");
}

TEST(TextFileFailures, ClearReportsTheStepThatFailed) {
    FakeFile::Get().m_content = "old";
    TextFile file(L"x", TextFile::MODE_READ_WRITE);
    const TraceCapture trace;
    FakeFile::Get().m_setEndFails = true;
    EXPECT_EQ(ThrownMessage([&] { file.Clear(); }), "IOError");
    EXPECT_FALSE(file.Truncate());
    FakeFile::Get().m_seekFails = true;
    EXPECT_EQ(ThrownMessage([&] { file.Clear(); }), "CannotSetFilePosition");
    EXPECT_EQ(trace.GetText(),
              "Orska::Support::TextFile::Clear:620\tThrowing: ProductException(L\"IOError\") "
              "TextFile_Windows\n"
              "Orska::Support::TextFile::Clear:616\tThrowing: "
              "ProductException(L\"CannotSetFilePosition\") TextFile_Windows\n");
    EXPECT_EQ(FakeFile::Get().m_content, "old");
    EXPECT_EQ(file.Seek(1, TextFile::FROM_START), -1);
    EXPECT_EQ(file.GetPosition(), -1);
}

TEST(TextFileFailures, ReopenThatFailsLeavesTheFileClosed) {
    TextFile file(L"x", TextFile::MODE_READ);
    file.Lock();
    FakeFile::Get().m_openFails = true;
    EXPECT_FALSE(file.Reopen(TextFile::MODE_READ));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.ReadByte(), 255);
    FakeFile::Get().m_openFails = false;
    FakeFile::Get().m_seekFails = true;
    EXPECT_FALSE(file.Reopen(TextFile::MODE_APPEND));
    EXPECT_FALSE(FakeFile::Get().m_isOpen);
}

TEST(TextFileFailures, TheDestructorUnlocksOnlyALockedFile) {
    {
        TextFile file(L"x", TextFile::MODE_READ);
        file.Lock();
        EXPECT_TRUE(FakeFile::Get().m_isLocked);
    }
    EXPECT_FALSE(FakeFile::Get().m_isLocked);
    {
        TextFile file(L"x", TextFile::MODE_READ);
        file.Lock();
        ASSERT_TRUE(file.Reopen(TextFile::MODE_READ));
        FakeFile::Get().m_isLocked = true;  // by somebody else
    }
    EXPECT_TRUE(FakeFile::Get().m_isLocked);
}

TEST(TextFileFailures, AReadThatFailsEndsTheLineAndIsRemembered) {
    FakeFile::Get().m_content = "first\nsecond\n";
    FakeFile::Get().m_readFailsAt = 9;
    TextFile file(L"x", TextFile::MODE_READ);
    std::string line;
    EXPECT_TRUE(file.ReadLine(line));
    EXPECT_FALSE(file.HasReadFailed());
    EXPECT_TRUE(file.ReadLine(line));
    EXPECT_EQ(line, "sec");
    EXPECT_TRUE(file.HasReadFailed());
    EXPECT_FALSE(file.ReadLine(line));
    EXPECT_EQ(line, "");
    EXPECT_EQ(file.ReadByte(), 255);
    char bytes[4];
    EXPECT_EQ(file.Read(bytes, sizeof bytes), 0u);
    ASSERT_TRUE(file.Reopen(TextFile::MODE_READ));
    EXPECT_FALSE(file.HasReadFailed());
}

TEST(TextFileFailures, AWriteThatFailsReturnsTheBytesWritten) {
    FakeFile::Get().m_writeFailsAt = 3;
    TextFile file(L"x", TextFile::MODE_WRITE);
    EXPECT_EQ(file.Write("abcde", 5), 3u);
    EXPECT_EQ(file.Write("abcde", 5), 0u);
    EXPECT_EQ(file.WriteFormat("%d", 12), 0u);
}

TEST(TextFileFailures, AnIniFileThatCannotBeReadToItsEndIsAnError) {
    FakeFile::Get().m_content = "[S]\na=1\nb=2\nc=3\n";
    FakeFile::Get().m_readFailsAt = 12;  // after the line of b
    const IniFileConfigurationReader reader(false, false);
    SectionMap section = MakeSection(L"OLD", 1);
    EXPECT_EQ(ThrownMessage([&] { reader.LoadConfiguration(section, L"x.ini", L"S"); }),
              "IniParseError(x.ini, 4)");
    EXPECT_EQ(ToText(section), "OLD:1;");
}

}  // namespace
}  // namespace Orska::Support
