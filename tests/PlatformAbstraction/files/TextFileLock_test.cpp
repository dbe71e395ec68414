// Locks exclude the objects of one process and other processes, and wait.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "PlatformAbstraction/files/TextFile.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

namespace Orska::Support {
namespace {

using Test::IsByteFree;
using Test::RunInProcesses;
using Test::TemporaryDirectory;

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
