#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/SettingText.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using Test::GetProgramDirectory;
using Test::MakeSection;
using Test::TemporaryDirectory;
using Test::ThrownMessage;
using Test::ToText;
using Test::TraceCapture;

// A fuzzer compares sections whose names are upper case in the file and in the call.
TEST(IniFileConfigurationReader, LoadsOneSection) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x.ini", "top=0\n[Sect]\na=1\n[\xC3\xA4]\nc=3\n");
    // The wanted name is upper-cased as text and the one in the file byte by byte.
    for (const auto& [name, loaded] :
         {std::pair{"sEct", "A=1;"}, {"", "TOP=0;"}, {"missing", ""}, {"\xC3\xA4", ""}}) {
        SCOPED_TRACE(name);
        SectionMap section = MakeSection(L"OLD", 1);
        const IniFileConfigurationReader reader(false, false);
        EXPECT_TRUE(reader.LoadConfiguration(section, path, name));
        EXPECT_EQ(ToText(section), loaded);
        ConfigurationMap configuration;
        const orska_wstring wanted = name;
        EXPECT_TRUE(reader.LoadConfiguration(configuration, path, &wanted));
        EXPECT_EQ(configuration.size(), *loaded == '\0' ? 0u : 1u);
    }
    SectionMap section;
    EXPECT_TRUE(
        IniFileConfigurationReader(false, false).LoadConfiguration(section, path, orska_wstring()));
    EXPECT_EQ(ToText(section), "TOP=0;");
}

TEST(IniFileConfigurationReader, LoadsManyKeysAndLongValues) {
    const TemporaryDirectory directory;
    const std::string longValue(1 << 20, 'x');
    std::string file = "[S]\n";
    for (int number = 0; number < 100'000; ++number) {
        file += "key" + std::to_string(number) + "=" + std::to_string(number) + "\n";
    }
    SectionMap section;
    EXPECT_TRUE(IniFileConfigurationReader(false, false)
                    .LoadConfiguration(section,
                                       directory.Write("x.ini", file + "long=" + longValue), L"S"));
    EXPECT_EQ(section.GetSize(), 100'001u);
    EXPECT_EQ(section.Find(L"KEY99999"), SettingValue(orska_wstring(L"99999")));
    EXPECT_EQ(section.Find(L"LONG"), SettingValue(orska_wstring(longValue)));
}

TEST(IniFileConfigurationReader, ReturnsFalseForAFileThatCannotBeOpened) {
    const TemporaryDirectory directory;
    const IniFileConfigurationReader reader(false, false);
    for (const orska_wstring& path :
         {orska_wstring(), orska_wstring(L""), orska_wstring(directory.GetPath("missing")),
          orska_wstring(directory.GetPath())}) {
        SCOPED_TRACE(path.GetAsUtf8());
        SectionMap section = MakeSection(L"OLD", 1);
        EXPECT_FALSE(reader.LoadConfiguration(section, path, L"S"));
        EXPECT_EQ(ToText(section), "OLD:1;");
    }
}

TEST(IniFileConfigurationReader, AnErrorLeavesTheSectionUnchanged) {
    const TemporaryDirectory directory;
    const TraceCapture trace;
    SectionMap section = MakeSection(L"OLD", 1);
    for (const char* line : {"bad", "a='b"}) {
        const std::string path = directory.Write("x.ini", std::string("[S]\na=1\n") + line);
        EXPECT_EQ(
            ThrownMessage([&] {
                IniFileConfigurationReader(false, false).LoadConfiguration(section, path, L"S");
            }),
            "IniParseError(" + path + ", 3)");
    }
    EXPECT_EQ(ToText(section), "OLD:1;");
    const std::string inner = "`anonymous-namespace'::ParseKeyValue:";
    const std::string wrapped =
        "\tThrowing: std::exception() IniFileConfigurationReader\n"
        "Orska::Support::IniFileConfigurationReader::LoadConfiguration:301\tThrowing: "
        "ProductException((L\"IniParseError\"), msgParams) IniFileConfigurationReader\n";
    EXPECT_EQ(trace.GetText(), inner + "75" + wrapped + inner + "102" + wrapped);
}

TEST(IniFileConfigurationReader, ResolvesARelativePathFromTheModule) {
    const TemporaryDirectory working;
    std::filesystem::current_path(working.GetPath());
    const std::string name = "orska." + std::to_string(getpid()) + ".ini";
    working.Write(name, "from=working");
    const std::filesystem::path beside = GetProgramDirectory() + name;
    std::ofstream(beside) << "from=module";
    struct Case {
        std::string m_path;
        bool m_resolve;
        const char* m_loaded;
    };
    const Case cases[] = {
        {name, false, "FROM=working;"},
        {name, true, "FROM=module;"},
        {".\\" + name, true, "FROM=module;"},
        {working.GetPath(name), true, "FROM=working;"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.m_path);
        SectionMap section;
        EXPECT_TRUE(IniFileConfigurationReader(false, row.m_resolve)
                        .LoadConfiguration(section, row.m_path, L""));
        EXPECT_EQ(ToText(section), row.m_loaded);
    }
    std::filesystem::remove(beside);
}

}  // namespace
}  // namespace Orska::Support
