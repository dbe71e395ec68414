// Locks as Linux has them, and between processes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "PlatformAbstraction/files/TextFile.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/WithoutFileCapabilities.h"

namespace Orska::Support {
namespace {

using Test::TemporaryDirectory;

/// Whether the byte can be locked now by somebody who has the file open himself.
bool IsFree(const std::string& in_path, off_t in_offset, short in_type = F_WRLCK) {
    const int descriptor = open(in_path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock range = {};
    range.l_type = in_type;
    range.l_start = in_offset;
    range.l_len = 1;
    EXPECT_EQ(fcntl(descriptor, F_OFD_GETLK, &range), 0);
    close(descriptor);
    return range.l_type == F_UNLCK;
}

TEST(TextFileLock, TakesTheRangeOfTheFileAndReleasesIt) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    for (const std::int32_t mode : {1, 3, 4, 6}) {
        SCOPED_TRACE(mode);
        std::optional<TextFile> file(std::in_place, path, mode);
        file->Lock();
        EXPECT_FALSE(IsFree(path, 0));
        EXPECT_FALSE(IsFree(path, 9));
        EXPECT_TRUE(IsFree(path, 10));
        file->Unlock();
        EXPECT_TRUE(IsFree(path, 0));
        file->Lock();
        file.reset();
        EXPECT_TRUE(IsFree(path, 0));
    }
}

TEST(TextFileLock, TakesOneByteOfAnEmptyFile) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "");
    TextFile file(path, TextFile::MODE_READ_WRITE);
    file.Lock();
    EXPECT_FALSE(IsFree(path, 0));
    EXPECT_TRUE(IsFree(path, 1));
}

TEST(TextFileLock, UnlockLeavesNothingOfAFileThatShrank) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    TextFile file(path, TextFile::MODE_READ_WRITE);
    file.Lock();
    file.Clear();
    file.Unlock();
    EXPECT_TRUE(IsFree(path, 0));
    EXPECT_TRUE(IsFree(path, 9));
}

TEST(TextFileLock, AReaderThatMayNotWriteKeepsWritersOut) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    std::optional<WithoutFileCapabilities> asOthers(std::in_place);
    TextFile file(path, TextFile::MODE_READ);
    file.Lock();
    asOthers.reset();
    std::filesystem::permissions(path, std::filesystem::perms(0644));
    EXPECT_FALSE(IsFree(path, 0));
    EXPECT_TRUE(IsFree(path, 0, F_RDLCK));
}

/// Adds one to the number in the file, under the lock.
void Increment(const std::string& in_path) {
    TextFile file(in_path, TextFile::MODE_READ_WRITE_CREATE);
    file.Lock();
    std::string number;
    file.ReadLine(number);
    file.Clear();
    file.WriteFormat("%d", std::atoi(number.c_str()) + 1);
    file.Unlock();
}

TEST(TextFileLock, ExcludesThreadsAndProcesses) {
    constexpr int ROUNDS = 200;
    const TemporaryDirectory directory;
    const std::string path = directory.Write("count", "0");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        for (int round = 0; round < ROUNDS; ++round) {
            Increment(path);
        }
        _exit(0);
    }
    const auto work = [&] {
        for (int round = 0; round < ROUNDS; ++round) {
            Increment(path);
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(directory.Read("count"), std::to_string(3 * ROUNDS));
}

}  // namespace
}  // namespace Orska::Support
