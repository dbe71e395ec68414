// Files whose system calls fail.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <filesystem>
#include <string>

#include "PlatformAbstraction/files/TextFile.h"
#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"
#include "tests/support/SettingText.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

// Set by a test, read by the calls below, which replace the C library's and fail with EIO.
static bool s_seekFails = false;
static bool s_truncateFails = false;
static long s_readFailsFrom = LONG_MAX;  // a position
static bool s_writesAreCut = false;      // to two bytes, each after an interruption

static long Call(bool in_fails, long in_number, int in_file, long in_second, long in_third) {
    errno = EIO;
    return in_fails ? -1 : syscall(in_number, in_file, in_second, in_third);
}

extern "C" off_t lseek(int in_file, off_t in_offset, int in_origin) noexcept {
    return Call(s_seekFails, SYS_lseek, in_file, in_offset, in_origin);
}

extern "C" int ftruncate(int in_file, off_t in_length) noexcept {
    return static_cast<int>(Call(s_truncateFails, SYS_ftruncate, in_file, in_length, 0));
}

extern "C" ssize_t read(int in_file, void* out_buffer, std::size_t in_count) {
    const long position = s_readFailsFrom == LONG_MAX ? 0 : lseek(in_file, 0, SEEK_CUR);
    const long most = s_readFailsFrom - position;
    return Call(most <= 0, SYS_read, in_file, reinterpret_cast<long>(out_buffer),
                std::min(static_cast<long>(in_count), most));
}

extern "C" ssize_t write(int in_file, const void* in_bytes, std::size_t in_count) {
    static bool s_isInterrupted = false;
    s_isInterrupted = s_writesAreCut && !s_isInterrupted;
    errno = EINTR;
    if (s_isInterrupted) return -1;
    return syscall(SYS_write, in_file, in_bytes,
                   s_writesAreCut ? std::min<std::size_t>(in_count, 2) : in_count);
}

namespace Orska::Support {
namespace {

using Test::IsByteFree;
using Test::MakeSection;
using Test::TemporaryDirectory;
using Test::ThrownMessage;
using Test::ToText;
using Test::TraceCapture;

class TextFileFailures : public testing::Test {
protected:
    ~TextFileFailures() override {
        s_seekFails = s_truncateFails = s_writesAreCut = false;
        s_readFailsFrom = LONG_MAX;
    }

    TemporaryDirectory m_directory;
    const std::string m_path = m_directory.Write("x", "first\nsecond\n");
};

TEST_F(TextFileFailures, AnAppendPositionThatCannotBeSetClosesTheFile) {
    s_seekFails = true;
    const int free = dup(0);
    close(free);
    const TraceCapture trace;
    EXPECT_EQ(ThrownMessage([&] { TextFile file(m_path, TextFile::MODE_APPEND); }),
              "CannotSetFilePosition");
    EXPECT_EQ(trace.GetText(),
              "Orska::Support::TextFile::TextFile:161\tSetFilePointerEx() failed for file '" +
                  m_path +
                  "': Input/output error TextFile_Windows\n"
                  "Orska::Support::TextFile::TextFile:163\tThrowing: "
                  "ProductException(L\"CannotSetFilePosition\") TextFile_Windows\n");
    const int next = dup(0);
    EXPECT_EQ(next, free);
    close(next);
}

TEST_F(TextFileFailures, ClearReportsTheStepThatFailed) {
    TextFile file(m_path, TextFile::MODE_READ_WRITE);
    const TraceCapture trace;
    s_truncateFails = true;
    EXPECT_EQ(ThrownMessage([&] { file.Clear(); }), "IOError");
    EXPECT_FALSE(file.Truncate());
    s_seekFails = true;
    EXPECT_EQ(ThrownMessage([&] { file.Clear(); }), "CannotSetFilePosition");
    EXPECT_EQ(trace.GetText(),
              "Orska::Support::TextFile::Clear:620\tThrowing: ProductException(L\"IOError\") "
              "TextFile_Windows\n"
              "Orska::Support::TextFile::Clear:616\tThrowing: "
              "ProductException(L\"CannotSetFilePosition\") TextFile_Windows\n");
    EXPECT_EQ(file.Seek(1, TextFile::FROM_START), -1);
    EXPECT_EQ(file.GetPosition(), -1);
    s_seekFails = false;
    EXPECT_EQ(m_directory.Read("x"), "first\nsecond\n");
}

TEST_F(TextFileFailures, ReopenThatFailsLeavesTheFileClosed) {
    TextFile file(m_path, TextFile::MODE_READ);
    file.Lock();
    s_seekFails = true;
    EXPECT_FALSE(file.Reopen(TextFile::MODE_APPEND));
    s_seekFails = false;
    EXPECT_FALSE(file.IsOpen());
    std::filesystem::remove(m_path);
    EXPECT_FALSE(file.Reopen(TextFile::MODE_READ));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.ReadByte(), 255);
}

TEST_F(TextFileFailures, AReadThatFailsEndsTheLineAndIsRemembered) {
    s_readFailsFrom = 9;
    TextFile file(m_path, TextFile::MODE_READ);
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

TEST_F(TextFileFailures, AWriteThatFailsReturnsTheBytesWritten) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit = {3, before.rlim_max};
    TextFile file(m_path, TextFile::MODE_WRITE);
    s_writesAreCut = true;
    EXPECT_EQ(file.Write("abcde", 5), 5u);
    EXPECT_EQ(m_directory.Read("x"), "abcde");
    file.Clear();
    setrlimit(RLIMIT_FSIZE, &limit);
    const std::size_t written = file.Write("abcde", 5);
    const std::size_t more = file.Write("abcde", 5);
    const std::size_t formatted = file.WriteFormat("%d", 12);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(written, 3u);
    EXPECT_EQ(more + formatted, 0u);
}

TEST_F(TextFileFailures, AnIniFileThatCannotBeReadToItsEndIsAnError) {
    m_directory.Write("x", "[S]\na=1\nb=2\nc=3\n");
    s_readFailsFrom = 12;  // after the line of b
    const IniFileConfigurationReader reader(false, false);
    SectionMap section = MakeSection(L"OLD", 1);
    EXPECT_EQ(ThrownMessage([&] { reader.LoadConfiguration(section, m_path, L"S"); }),
              "IniParseError(" + m_path + ", 4)");
    EXPECT_EQ(ToText(section), "OLD:1;");
}

}  // namespace
}  // namespace Orska::Support
