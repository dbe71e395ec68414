// Files whose system calls fail, on a handle in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "PlatformAbstraction/files/OrskaUtility.h"
#include "PlatformAbstraction/files/TextFile.h"
#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"
#include "tests/support/SettingText.h"
#include "tests/support/TestSystem.h"
#include "tests/support/TextFile_Fake.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using Test::FakeFile;
using Test::MakeSection;
using Test::SYSTEM_ERRORS;
using Test::ThrownMessage;
using Test::ToText;
using Test::TraceCapture;

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

TEST(TextFileFailures, ClearTellsWhichStepFailed) {
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
    FakeFile::Get().m_openFails = false;
    FakeFile::Get().m_seekFails = true;
    EXPECT_FALSE(file.Reopen(TextFile::MODE_APPEND));
    EXPECT_FALSE(FakeFile::Get().m_isOpen);
}

TEST(TextFileFailures, TheDestructorUnlocksOnlyWhatIsLocked) {
    {
        TextFile file(L"x", TextFile::MODE_READ);
        file.Lock();
        EXPECT_TRUE(FakeFile::Get().m_isLocked);
    }
    EXPECT_FALSE(FakeFile::Get().m_isLocked);
    FakeFile::Get().m_isLocked = true;  // somebody else's
    { TextFile file(L"x", TextFile::MODE_READ); }
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

TEST(TextFileFailures, AWriteThatFailsTellsHowFarItCame) {
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
