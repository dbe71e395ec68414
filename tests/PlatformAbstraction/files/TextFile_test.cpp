#include "PlatformAbstraction/files/TextFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "PlatformAbstraction/files/OrskaUtility.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support {
namespace {

using Test::IsByteFree;
using Test::RunInProcesses;
using Test::SYSTEM_ERRORS;
using Test::TemporaryDirectory;
using Test::ThrownMessage;

std::string CannotOpen(const std::string& in_path, std::uint32_t in_error) {
    return "CannotOpenFile(" + in_path + ", " + GetLastErrorText(in_error).GetAsUtf8() + ")";
}

TEST(TextFile, Modes) {
    struct Case {
        std::int32_t m_mode;
        bool m_creates;
        std::int64_t m_position;     // in a file that held "old\n"
        const char* m_readsFirst;    // null: cannot read
        std::size_t m_written;       // of three bytes
        const char* m_contentAfter;  // of the file that held "old\n"
    };
    constexpr Case CASES[] = {
        {TextFile::MODE_READ, false, 0, "old", 0, "old\n"},
        {TextFile::MODE_WRITE, true, 0, nullptr, 3, "new"},
        {TextFile::MODE_APPEND, true, 4, nullptr, 3, "old\nnew"},
        {TextFile::MODE_READ_WRITE, false, 0, "old", 3, "old\nnew"},
        {TextFile::MODE_READ_WRITE_EMPTY, true, 0, nullptr, 3, "new"},
        {TextFile::MODE_READ_WRITE_CREATE, true, 0, "old", 3, "old\nnew"},
    };
    for (const Case& row : CASES) {
        SCOPED_TRACE(row.m_mode);
        const TemporaryDirectory directory;
        const std::string missing = directory.GetPath("missing");
        EXPECT_EQ(ThrownMessage([&] { TextFile file(missing, row.m_mode); }),
                  row.m_creates ? "nothing" : CannotOpen(missing, SYSTEM_ERRORS.m_noSuchFile));
        EXPECT_EQ(std::filesystem::exists(missing), row.m_creates);
        {
            TextFile file(directory.Write("present", "old\n"), row.m_mode);
            EXPECT_EQ(file.GetPosition(), row.m_position);
            std::string line;
            EXPECT_EQ(file.ReadLine(line), row.m_readsFirst != nullptr);
            EXPECT_EQ(line, row.m_readsFirst == nullptr ? "" : row.m_readsFirst);
            EXPECT_EQ(file.Write("new", 3), row.m_written);
        }
        EXPECT_EQ(directory.Read("present"), row.m_contentAfter);
    }
}

TEST(TextFile, RefusesFilesThatCannotBeOpened) {
    const TemporaryDirectory directory;
    const std::string deep = directory.GetPath("a/b/c.txt");
    const std::string file = directory.Write("file", "");
    const std::uint32_t noDirectory = SYSTEM_ERRORS.m_noSuchDirectory;
    const struct {
        const char* m_name;
        orska_wstring m_file;
        std::int32_t m_mode;
        std::string m_thrown;
    } cases[] = {
        {"NULL name", {}, 1, "InvalidFileName"},
        {"empty name", L"", 2, "InvalidFileName"},
        {"empty name and no mode", L"", 0, "InvalidFileName"},
        {"mode 0", file, 0, "UnrecognizedOpenMode"},
        {"mode 7", file, 7, "UnrecognizedOpenMode"},
        {"mode -1", file, -1, "UnrecognizedOpenMode"},
        {"NUL in the name", orska_wstring(file) + orska_wstring(L"\0x", 2), 1,
         CannotOpen(file + std::string("\0x", 2), noDirectory)},
        {"only one level is created", deep, 2, CannotOpen(deep, noDirectory)},
        {"no level is created for reading", deep, 1, CannotOpen(deep, noDirectory)},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(ThrownMessage([&] { TextFile opened(row.m_file, row.m_mode); }), row.m_thrown);
    }
    EXPECT_FALSE(std::filesystem::exists(directory.GetPath("a")));
}

TEST(TextFile, OpensPathsWithEitherSeparator) {
    const TemporaryDirectory directory;
    std::string path = directory.GetPath("sub/file.txt");
    std::replace(path.begin(), path.end(), '/', '\\');
    {
        TextFile file(path, TextFile::MODE_WRITE);
        EXPECT_EQ(file.GetFileName().GetAsUtf8(), path);
        file.WriteLine("x");
    }
    EXPECT_EQ(directory.Read("sub/file.txt"), "x\r\n");
    std::string line;
    EXPECT_TRUE(TextFile(path, TextFile::MODE_READ).ReadLine(line));
    EXPECT_EQ(line, "x");
}

std::vector<std::string> ReadLines(const std::string& in_path) {
    TextFile file(in_path, TextFile::MODE_READ);
    std::vector<std::string> lines;
    for (std::string line; file.ReadLine(line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(TextFile, Lines) {
    using namespace std::string_literals;
    struct Case {
        const char* m_name;
        std::string m_bytes;
        std::vector<std::string> m_lines;  // up to the first call that returns false
    };
    const Case cases[] = {
        {"empty file", "", {}},
        {"one byte", "a", {"a"}},
        {"one line feed", "\n", {""}},
        {"one carriage return", "\r", {""}},
        {"CR LF, no final newline", "a\r\nb", {"a", "b"}},
        {"final newline ends no further line", "a\nb\n", {"a", "b"}},
        {"CR alone joins", "a\rb", {"ab"}},
        {"CR anywhere is dropped", "\r\ra\r\r\n\rb\r", {"a", "b"}},
        {"empty lines", "\n\na\n\n", {"", "", "a", ""}},
        {"NUL is a byte", "a\0b\n\0"s, {"a\0b"s, "\0"s}},
        {"0xFF at the start", "\xFF"s + "abc\n", {}},
        {"0xFF ends a line and is consumed", "ab\xFF"s + "cd\nef", {"ab", "cd", "ef"}},
        {"0xFF after a line feed", "ab\n\xFF"s + "cd\n", {"ab"}},
        {"0xFF after a CR", "\r\xFF"s + "cd\n", {"", "cd"}},
    };
    const TemporaryDirectory directory;
    for (const Case& row : cases) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(ReadLines(directory.Write("lines", row.m_bytes)), row.m_lines);
    }
}

/// Two files read the same bytes; one of them drops its read-ahead after each step.
TEST(TextFile, ReadAheadDoesNotShow) {
    const TemporaryDirectory directory;
    std::mt19937 random(20);
    for (const std::string_view alphabet :
         {std::string_view("a\n"), std::string_view("ab\r\n\xFF"),
          std::string_view("abcdefghijklmnopqrstuvwxyz0123456789 =\n")}) {
        std::string content(100'000, '\0');
        for (char& byte : content) byte = alphabet[random() % alphabet.size()];
        const std::string path = directory.Write("bytes", content);
        TextFile ahead(path, TextFile::MODE_READ);
        TextFile dropping(path, TextFile::MODE_READ_WRITE);
        const auto size = static_cast<std::int64_t>(content.size());
        for (std::int64_t position = 0; position < size; position = ahead.GetPosition()) {
            ASSERT_EQ(dropping.GetPosition(), position);
            const std::string own = content.substr(static_cast<std::size_t>(position), 2);
            ASSERT_EQ(dropping.Write(own.data(), own.size()), own.size());
            ASSERT_EQ(dropping.Seek(position, TextFile::FROM_START), position);
            std::string line(random() % 40 == 0 ? 33'000 : 0, '\0');
            std::string other = line;
            ASSERT_EQ(ahead.Read(line.data(), line.size()),
                      dropping.Read(other.data(), other.size()));
            ASSERT_EQ(line, other);
            ASSERT_EQ(ahead.ReadByte(), dropping.ReadByte());
            ASSERT_EQ(ahead.ReadLine(line), dropping.ReadLine(other));
            ASSERT_EQ(line, other);
        }
        ASSERT_EQ(directory.Read("bytes"), content);
    }
}

TEST(TextFile, SeeksByItsOwnOriginCodes) {
    const TemporaryDirectory directory;
    TextFile file(directory.Write("ten", "0123456789"), TextFile::MODE_READ);
    EXPECT_EQ(file.Seek(4, 3), 4);
    EXPECT_EQ(file.Seek(0, 2), 4);
    EXPECT_EQ(file.Seek(1, 1), 5);
    EXPECT_EQ(file.Seek(1, 0), 6);
    EXPECT_EQ(file.Seek(-1, 99), 5);
    EXPECT_EQ(file.ReadByte(), '5');
    EXPECT_EQ(file.Seek(-100, 3), -1);
    EXPECT_EQ(file.GetPosition(), 6);
    EXPECT_EQ(file.ReadByte(), '6');
    EXPECT_EQ(file.Seek(0, 4), 10);
    EXPECT_EQ(file.GetSize(), 10u);
    EXPECT_EQ(file.Seek(5, 4), 15);
    EXPECT_EQ(file.ReadByte(), 255);
}

TEST(TextFile, SeesAFileThatGrowsOrShrinksMeanwhile) {
    const TemporaryDirectory directory;
    const std::string content(100'000, 'x');
    TextFile file(directory.Write("x", content), TextFile::MODE_READ);
    char bytes[10];
    EXPECT_EQ(file.Read(bytes, sizeof bytes), 10u);
    std::filesystem::resize_file(directory.GetPath("x"), 5);
    std::string line;
    EXPECT_FALSE(file.ReadLine(line));
    EXPECT_FALSE(file.HasReadFailed());
    EXPECT_EQ(file.GetPosition(), 10);
    directory.Write("x", "0123456789tail");
    EXPECT_TRUE(file.ReadLine(line));
    EXPECT_EQ(line, "tail");
    EXPECT_FALSE(file.ReadLine(line));
    EXPECT_EQ(file.Read(bytes, sizeof bytes), 0u);
    EXPECT_FALSE(file.HasReadFailed());
}

TEST(TextFile, FormatsTextOfEveryLength) {
    const TemporaryDirectory directory;
    std::string expected;
    {
        TextFile file(directory.GetPath("out"), TextFile::MODE_WRITE);
        for (const std::size_t length : {0, 1, 254, 255, 256, 257, 5000}) {
            const std::string text(length, 'x');
            EXPECT_EQ(file.WriteFormat("%s", text.c_str()), length);
            expected += text;
        }
        EXPECT_EQ(file.WriteFormat("%d%%,%s", 7, "y"), 4u);
        const wchar_t noCharacter[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
        if (std::snprintf(nullptr, 0, "%ls", noCharacter) < 0) {  // not every C library refuses it
            EXPECT_EQ(file.WriteFormat("lost%ls", noCharacter), 0u);
        }
        EXPECT_EQ(file.WriteLine("end"), 5u);
        EXPECT_TRUE(file.Flush());
    }
    EXPECT_EQ(directory.Read("out"), expected + "7%,yend\r\n");
}

TEST(TextFile, ClearAndTruncateEmptyTheFile) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "one\ntwo\n");
    TextFile file(path, TextFile::MODE_READ_WRITE);
    std::string line;
    EXPECT_TRUE(file.ReadLine(line));
    file.Clear();
    EXPECT_EQ(file.GetPosition(), 0);
    file.Write("abc", 3);
    EXPECT_EQ(directory.Read("x"), "abc");
    EXPECT_EQ(file.ReadByte(), 255);
    EXPECT_TRUE(file.Truncate());
    EXPECT_EQ(directory.Read("x"), "");
    TextFile reader(path, TextFile::MODE_READ);
    EXPECT_FALSE(reader.Truncate());
    EXPECT_EQ(ThrownMessage([&] { reader.Clear(); }), "IOError");
}

TEST(TextFile, Reopens) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "one\ntwo\n");
    TextFile file(path, TextFile::MODE_READ);
    std::string line;
    EXPECT_TRUE(file.ReadLine(line));
    EXPECT_EQ(ThrownMessage([&] { file.Reopen(7); }), "UnrecognizedOpenMode");
    EXPECT_TRUE(file.ReadLine(line));
    EXPECT_EQ(line, "two");
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(file.Reopen(TextFile::MODE_READ));
        EXPECT_TRUE(file.ReadLine(line));
        EXPECT_EQ(line, "one");
    }
    ASSERT_TRUE(file.Reopen(TextFile::MODE_APPEND));
    EXPECT_EQ(file.Write("three", 5), 5u);
    ASSERT_TRUE(file.Reopen(TextFile::MODE_READ));
    EXPECT_EQ(file.ReadByte(), 'o');
}

// Locks exclude the objects of one process and other processes, and wait.
TEST(TextFileLock, LocksTheRangeOfTheFileAndReleasesIt) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    for (const std::int32_t mode : {1, 3, 4, 6}) {
        SCOPED_TRACE(mode);
        {
            TextFile file(path, mode);
            file.Lock();
            EXPECT_FALSE(IsByteFree(path, 0));
            EXPECT_FALSE(IsByteFree(path, 9));
            EXPECT_TRUE(IsByteFree(path, 10));
            file.Unlock();
            EXPECT_TRUE(IsByteFree(path, 0));
            file.Lock();
            file.Lock();  // does not wait
            EXPECT_FALSE(IsByteFree(path, 0));
        }
        EXPECT_TRUE(IsByteFree(path, 0));
    }
}

TEST(TextFileLock, UnlockReleasesAFileThatShrankOrGrew) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    TextFile file(path, TextFile::MODE_READ_WRITE);
    file.Lock();
    file.Clear();
    file.Unlock();
    EXPECT_TRUE(IsByteFree(path, 0));
    EXPECT_TRUE(IsByteFree(path, 9));
    file.Lock();  // one byte of an empty file
    EXPECT_FALSE(IsByteFree(path, 0));
    EXPECT_TRUE(IsByteFree(path, 1));
    file.Write("abc", 3);
    file.Unlock();
    EXPECT_TRUE(IsByteFree(path, 0));
}

TEST(TextFileLock, RereadsAfterTheLock) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "one\ntwo\n");
    TextFile reader(path, TextFile::MODE_READ);
    std::string line;
    EXPECT_TRUE(reader.ReadLine(line));
    {
        TextFile writer(path, TextFile::MODE_READ_WRITE);
        writer.Lock();
        writer.Seek(4, TextFile::FROM_START);
        writer.Write("TWO", 3);
    }
    reader.Lock();
    EXPECT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line, "TWO");
}

TEST(TextFileLock, ExcludesThreadsAndProcesses) {
    constexpr int ROUNDS = 200;
    const TemporaryDirectory directory;
    const std::string path = directory.Write("count", "0");
    const auto work = [&] {
        for (int round = 0; round < ROUNDS; ++round) {
            TextFile file(path, TextFile::MODE_READ_WRITE_CREATE);
            file.Lock();
            std::string number;
            file.ReadLine(number);
            file.Clear();
            file.WriteFormat("%d", std::stoi(number) + 1);
            file.Unlock();
        }
    };
    const int processes = RunInProcesses(2, [&](int) {
        std::thread second(work);
        work();
        second.join();
    });
    ASSERT_GE(processes, 1);
    EXPECT_EQ(directory.Read("count"), std::to_string(processes * 2 * ROUNDS));
}

}  // namespace
}  // namespace Orska::Support
