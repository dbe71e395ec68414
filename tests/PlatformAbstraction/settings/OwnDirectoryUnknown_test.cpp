// A system that does not know where the library is.
#include <gtest/gtest.h>

#include <filesystem>

#include "PlatformAbstraction/base/OwnDirectory.h"
#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"
#include "tests/support/TemporaryDirectory.h"

namespace Orska::Support {

NativePath GetOwnDirectory() { return {}; }

namespace {

using Test::TemporaryDirectory;

TEST(OwnDirectoryUnknown, ARelativePathNamesNoFile) {
    const TemporaryDirectory stranger;
    stranger.Write("own.ini", "[S]\na=1\n");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(stranger.GetPath());
    SectionMap section;
    EXPECT_FALSE(
        IniFileConfigurationReader(true, true).LoadConfiguration(section, L"own.ini", L"S"));
    EXPECT_TRUE(
        IniFileConfigurationReader(true, false).LoadConfiguration(section, L"own.ini", L"S"));
    std::filesystem::current_path(before);
}

}  // namespace
}  // namespace Orska::Support
