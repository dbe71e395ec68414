// Paths and directories by the rules of Linux.
#include <gtest/gtest.h>

#include <string>

#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "tests/support/TestSystem.h"

namespace Orska::Support {
namespace {

using Test::SetVariable;

TEST(FileSystemUtils, ASlashMakesAPathAbsolute) {
    EXPECT_FALSE(FileSystemUtils::IsRelative(L"/"));
    EXPECT_FALSE(FileSystemUtils::IsRelative(L"/a"));
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
        SetVariable("TMPDIR", row.m_variable.c_str());
        EXPECT_EQ(FileSystemUtils::GetTempDirectory().GetAsUtf8(), row.m_directory);
    }
    SetVariable("TMPDIR", nullptr);
    EXPECT_EQ(FileSystemUtils::GetTempDirectory().GetAsUtf8(), "/tmp");
}

}  // namespace
}  // namespace Orska::Support
