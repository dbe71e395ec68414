// Paths and directories by the rules of Windows.
#include <gtest/gtest.h>

#include <string>

#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "tests/support/TestSystem.h"

namespace Orska::Support {
namespace {

using Test::SetVariable;

TEST(FileSystemUtils, ASlashMakesNoPathAbsolute) {
    EXPECT_TRUE(FileSystemUtils::IsRelative(L"/"));
    EXPECT_TRUE(FileSystemUtils::IsRelative(L"/a"));
}

TEST(FileSystemUtils, FindsTheTemporaryDirectory) {
    const std::string longest = "C:\\" + std::string(255, 'x');
    const struct {
        std::string m_variable;
        std::string m_directory;
    } rows[] = {
        {"C:\\somewhere", "C:\\somewhere\\"},
        {"C:/some where/", "C:\\some where\\"},
        {longest, longest + "\\"},
        {longest + "x", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_variable);
        SetVariable("TMP", row.m_variable.c_str());
        EXPECT_EQ(FileSystemUtils::GetTempDirectory().GetAsUtf8(), row.m_directory);
    }
    EXPECT_TRUE(FileSystemUtils::GetTempDirectory().IsNull());
}

}  // namespace
}  // namespace Orska::Support
