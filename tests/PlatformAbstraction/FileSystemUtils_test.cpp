#include "PlatformAbstraction/FileSystemUtils.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using Test::TemporaryDirectory;
using Test::ThrownMessage;
using Test::TraceCapture;

TEST(FileSystemUtils, CreatesTheDirectoryOfAFile) {
    struct Case {
        const char* m_path;     // below the temporary directory
        const char* m_created;  // null: refused
    };
    constexpr Case CASES[] = {
        {"one/file.txt", "one"},        {"two\\file.txt", "two"}, {"three/", "three"},
        {"one/four\\file", "one/four"}, {"present/x", "present"}, {"a/b/c.txt", nullptr},
        {"file/sub/x", nullptr},
    };
    const TemporaryDirectory directory;
    std::filesystem::create_directory(directory.GetPath("present"));
    directory.Write("file", "");
    for (const Case& row : CASES) {
        SCOPED_TRACE(row.m_path);
        const std::string path = directory.GetPath(row.m_path);
        const std::string thrown =
            ThrownMessage([&] { FileSystemUtils::CreateFileDirectory(path); });
        if (row.m_created != nullptr) {
            EXPECT_EQ(thrown, "nothing");
            EXPECT_TRUE(std::filesystem::is_directory(directory.GetPath(row.m_created)));
        } else {
            EXPECT_EQ(thrown.rfind("CannotOpenFile(" + path + ", No", 0), 0u) << thrown;
        }
    }
    // A file in the directory's place is met by the open that follows.
    EXPECT_EQ(
        ThrownMessage([&] { FileSystemUtils::CreateFileDirectory(directory.GetPath("file/x")); }),
        "nothing");
    EXPECT_EQ(ThrownMessage([] { FileSystemUtils::CreateFileDirectory(L"name only"); }), "nothing");
    EXPECT_EQ(ThrownMessage([] { FileSystemUtils::CreateFileDirectory({}); }), "nothing");
}

TEST(FileSystemUtils, TracesItsThrow) {
    const TraceCapture trace;
    ThrownMessage([] { FileSystemUtils::CreateFileDirectory(L"/missing/a/b"); });
    EXPECT_EQ(trace.GetText(),
              "Orska::Support::FileSystemUtils::CreateFileDirectory:0\tThrowing: "
              "ProductException((L\"CannotOpenFile\"), msgParams) FileSystemUtils_Windows\n");
}

TEST(FileSystemUtils, TellsRelativePaths) {
    struct Case {
        const wchar_t* m_path;
        bool m_isRelative;
        bool m_isJoined;
    };
    constexpr Case CASES[] = {
        {L"", true, true},      {L"a", true, true},          {L"a/b", true, true},
        {L".", true, true},     {L".\\a", true, true},       {L"..\\a", true, true},
        {L".:x", false, true},  {L"/", false, false},        {L"/a", false, false},
        {L"\\a", false, false}, {L"\\\\host", false, false}, {L"C:\\a", false, false},
        {L"C:", false, false},  {L"C:a", false, false},      {L"ab:c", true, true},
    };
    for (const Case& row : CASES) {
        SCOPED_TRACE(orska_wstring(row.m_path).GetAsUtf8());
        EXPECT_EQ(FileSystemUtils::IsRelative(row.m_path), row.m_isRelative);
        EXPECT_EQ(FileSystemUtils::IsJoinedToDirectory(row.m_path), row.m_isJoined);
    }
    EXPECT_TRUE(FileSystemUtils::IsRelative({}));
}

TEST(FileSystemUtils, FindsItsOwnModule) {
    // The library is linked into the test program here.
    EXPECT_EQ(FileSystemUtils::GetModuleDirectory().GetAsUtf8(),
              std::filesystem::canonical("/proc/self/exe").parent_path().string() + "/");
}

TEST(FileSystemUtils, FindsTheTemporaryDirectory) {
    const std::string longest(259, 'x');
    struct Case {
        std::string m_variable;
        std::string m_directory;
    };
    const Case cases[] = {
        {"/var/tmp", "/var/tmp"},
        {"", "/tmp"},
        {longest, longest},
        {longest + "x", ""},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.m_variable);
        setenv("TMPDIR", row.m_variable.c_str(), 1);
        EXPECT_EQ(FileSystemUtils::GetTempDirectory().GetAsUtf8(), row.m_directory);
    }
    unsetenv("TMPDIR");
    EXPECT_EQ(FileSystemUtils::GetTempDirectory().GetAsUtf8(), "/tmp");
}

}  // namespace
}  // namespace Orska::Support
