// Locks exclude the objects of one process, and wait.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include "PlatformAbstraction/files/TextFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace Orska::Support {
namespace {

using Test::TemporaryDirectory;

TEST(TextFileLock, ReadsAgainWhatAnotherChangedBeforeTheLock) {
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

TEST(TextFileLock, Waits) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "content");
    std::optional<TextFile> holder(std::in_place, path, TextFile::MODE_READ);
    holder->Lock();
    std::atomic<bool> hasLock = false;
    std::thread waiter([&] {
        TextFile file(path, TextFile::MODE_READ);
        file.Lock();
        hasLock = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(hasLock);
    holder.reset();
    waiter.join();
    EXPECT_TRUE(hasLock);
}

}  // namespace
}  // namespace Orska::Support
