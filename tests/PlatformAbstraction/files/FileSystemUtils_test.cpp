#include "PlatformAbstraction/files/FileSystemUtils.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "PlatformAbstraction/files/OrskaUtility.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support {
namespace {

using Test::GetProgramDirectory;
using Test::GetTemporaryDirectories;
using Test::IS_SLASH_ABSOLUTE;
using Test::LONGEST_TEMPORARY_DIRECTORY;
using Test::SetVariable;
using Test::SYSTEM_ERRORS;
using Test::TEMPORARY_DIRECTORY_VARIABLE;
using Test::TemporaryDirectory;
using Test::ThrownMessage;

TEST(FileSystemUtils, CreatesTheDirectoryOfAFile) {
    struct Case {
        const char* m_path;     // below the temporary directory
        const char* m_created;  // null: refused
        std::uint32_t m_error = 0;
    };
    const Case cases[] = {
        {"one/file.txt", "one"},
        {"two\\file.txt", "two"},
        {"three/", "three"},
        {"one/four\\file", "one/four"},
        {"present/x", "present"},
        {"a/b/c.txt", nullptr, SYSTEM_ERRORS.m_noSuchDirectory},
        {"file/sub/x", nullptr, SYSTEM_ERRORS.m_notADirectory},
    };
    const TemporaryDirectory directory;
    std::filesystem::create_directory(directory.GetPath("present"));
    directory.Write("file", "");
    for (const Case& row : cases) {
        SCOPED_TRACE(row.m_path);
        const std::string path = directory.GetPath(row.m_path);
        const std::string thrown =
            ThrownMessage([&] { FileSystemUtils::CreateFileDirectory(path); });
        if (row.m_created != nullptr) {
            EXPECT_EQ(thrown, "nothing");
            EXPECT_TRUE(std::filesystem::is_directory(directory.GetPath(row.m_created)));
        } else {
            EXPECT_EQ(thrown, "CannotOpenFile(" + path + ", " +
                                  GetLastErrorText(row.m_error).GetAsUtf8() + ")");
        }
    }
    // If a file has the directory's name, only the open that follows fails.
    EXPECT_EQ(
        ThrownMessage([&] { FileSystemUtils::CreateFileDirectory(directory.GetPath("file/x")); }),
        "nothing");
    EXPECT_EQ(ThrownMessage([] { FileSystemUtils::CreateFileDirectory(L"name only"); }), "nothing");
    EXPECT_EQ(ThrownMessage([] { FileSystemUtils::CreateFileDirectory({}); }), "nothing");
}

TEST(FileSystemUtils, TellsRelativePaths) {
    struct Case {
        const wchar_t* m_path;
        bool m_isRelative;
        bool m_isJoined;
    };
    constexpr Case CASES[] = {
        {L"", true, true},        {L"a", true, true},     {L"a/b", true, true},
        {L".", true, true},       {L".\\a", true, true},  {L"..\\a", true, true},
        {L".:x", false, true},    {L"\\a", false, false}, {L"\\\\host", false, false},
        {L"C:\\a", false, false}, {L"C:", false, false},  {L"C:a", false, false},
        {L"ab:c", true, true},
    };
    for (const Case& row : CASES) {
        SCOPED_TRACE(orska_wstring(row.m_path).GetAsUtf8());
        EXPECT_EQ(FileSystemUtils::IsRelative(row.m_path), row.m_isRelative);
        EXPECT_EQ(FileSystemUtils::IsJoinedToDirectory(row.m_path), row.m_isJoined);
    }
    EXPECT_TRUE(FileSystemUtils::IsRelative({}));
    EXPECT_NE(FileSystemUtils::IsRelative(L"/"), IS_SLASH_ABSOLUTE);
    EXPECT_NE(FileSystemUtils::IsRelative(L"/a"), IS_SLASH_ABSOLUTE);
}

TEST(FileSystemUtils, FindsTheTemporaryDirectory) {
    const char* const set = std::getenv(TEMPORARY_DIRECTORY_VARIABLE);
    const std::string before = set == nullptr ? "" : set;
    for (const auto& [variable, directory] : GetTemporaryDirectories()) {
        SetVariable(TEMPORARY_DIRECTORY_VARIABLE, variable);
        EXPECT_EQ(FileSystemUtils::GetTempDirectory().GetAsUtf8(), directory) << directory;
    }
    const std::string& longest = LONGEST_TEMPORARY_DIRECTORY;
    SetVariable(TEMPORARY_DIRECTORY_VARIABLE, longest.c_str());
    EXPECT_EQ(FileSystemUtils::GetTempDirectory().GetAsUtf8().substr(0, longest.size()), longest);
    SetVariable(TEMPORARY_DIRECTORY_VARIABLE, (longest + "x").c_str());
    EXPECT_TRUE(FileSystemUtils::GetTempDirectory().IsEmpty());
    SetVariable(TEMPORARY_DIRECTORY_VARIABLE, set == nullptr ? nullptr : before.c_str());
}

TEST(FileSystemUtils, FindsItsOwnModule) {
    // The library is linked into the test program here.
    EXPECT_EQ(FileSystemUtils::GetModuleDirectory().GetAsUtf8(), GetProgramDirectory());
}

}  // namespace
}  // namespace Orska::Support
