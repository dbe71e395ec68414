// Names on Linux that are not files, and access rights.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "PlatformAbstraction/files/TextFile.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/WithoutFileCapabilities.h"

namespace Orska::Support {
namespace {

using Test::IsByteFree;
using Test::TemporaryDirectory;
using Test::ThrownMessage;

TEST(TextFile, RefusesEverythingButFiles) {
    const TemporaryDirectory directory;
    const std::string fifo = directory.GetPath("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string folder = directory.GetPath("folder");
    std::filesystem::create_directory(folder);
    const std::string file = directory.Write("file", "");
    const struct {
        const char* m_name;
        std::string m_file;
        std::int32_t m_mode;
        std::string m_reason;
    } cases[] = {
        {"directory, read", folder, 1, "Is a directory"},
        {"directory, write", folder, 2, "Is a directory"},
        {"FIFO, read", fifo, 1, "Illegal seek"},
        {"FIFO, write", fifo, 2, "No such device or address"},
        {"FIFO, both", fifo, 6, "Illegal seek"},
        {"device", "/dev/zero", 1, "Illegal seek"},
        {"file for a directory", file + "/x", 2, "Not a directory"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(ThrownMessage([&] { TextFile opened(row.m_file, row.m_mode); }),
                  "CannotOpenFile(" + row.m_file + ", " + row.m_reason + ")");
    }
    TextFile null(L"/dev/null", TextFile::MODE_READ_WRITE);
    EXPECT_EQ(null.ReadByte(), 255);
}

TEST(TextFileLock, EndsWithItsObjectAlthoughAChildHasTheDescriptor) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "");
    const int next = dup(0);  // where the file will be
    close(next);
    int copy = -1;
    {
        TextFile file(path, TextFile::MODE_READ_WRITE);
        file.Lock();
        copy = dup(next);
    }
    EXPECT_TRUE(IsByteFree(path, 0));
    close(copy);
}

TEST(TextFileLock, AReaderWithoutWriteAccessKeepsWritersOut) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x", "0123456789");
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    std::optional<WithoutFileCapabilities> asOthers(std::in_place);
    TextFile file(path, TextFile::MODE_READ);
    file.Lock();
    asOthers.reset();
    std::filesystem::permissions(path, std::filesystem::perms(0644));
    EXPECT_FALSE(IsByteFree(path, 0));
    EXPECT_TRUE(IsByteFree(path, 0, true));
}

}  // namespace
}  // namespace Orska::Support
