// The rules of the registry reader, on a registry in memory.
#include "PlatformAbstraction/settings/RegistryConfigurationReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/RegistryKey_Fake.h"
#include "tests/support/SettingText.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using namespace std::string_literals;
using Test::FakeRegistry;
using Test::FakeRegistryKey;
using Test::FakeRegistryValue;
using Test::ThrownMessage;
using Test::ToText;
using Test::TraceCapture;
using testing::ElementsAre;

constexpr std::uint32_t REG_SZ = 1;
constexpr std::uint32_t REG_EXPAND_SZ = 2;
constexpr std::uint32_t REG_BINARY = 3;
constexpr std::uint32_t REG_DWORD = 4;
constexpr std::uint32_t REG_MULTI_SZ = 7;
constexpr std::uint32_t REG_QWORD = 11;

std::string LoadKey(const FakeRegistryKey& in_key, bool in_isCaseSensitive = false,
                    bool in_includeDriverValue = false) {
    FakeRegistry::Get().m_keys["HKCU\\Key"] = in_key;
    SectionMap section;
    RegistryConfigurationReader(in_isCaseSensitive)
        .LoadConfiguration(section, L"HKEY_CURRENT_USER", L"Key", nullptr, in_includeDriverValue);
    EXPECT_EQ(FakeRegistry::Get().m_openKeys, 0);
    return ToText(section);
}

TEST(RegistryConfigurationReader, Values) {
    struct Case {
        const char* m_name;
        std::uint32_t m_type;
        std::string m_data;
        std::string m_loaded;
    };
    const Case cases[] = {
        {"text with its NUL", REG_SZ, "a\0b\0\0\0"s, "V=ab;"},
        {"text without a NUL", REG_SZ, "a\0b\0"s, "V=ab;"},
        {"text with two NULs loses one", REG_SZ, "a\0\0\0\0\0"s, "V=a\0;"s},
        {"only a NUL", REG_SZ, "\0\0"s, "V=;"},
        {"no data", REG_SZ, "", "V=;"},
        {"one byte", REG_SZ, "a", "V=;"},
        {"odd size", REG_SZ, "a\0b\0c"s, "V=ab;"},
        {"outside of latin1", REG_SZ, "\xAC\x20\x3D\xD8\x00\xDE"s, "V=\u20AC\U0001F600;"},
        {"32-bit number", REG_DWORD, "\xFF\xFF\xFF\xFF", "V:4294967295;"},
        {"32-bit number cut short", REG_DWORD, "\x02\x01", "V:258;"},
        {"64-bit number", REG_QWORD, "\x00\x00\x00\x00\x01\x00\x00\x80"s,
         "V::9223372041149743104;"},
        {"expandable text", REG_EXPAND_SZ, "a\0\0\0"s, ""},
        {"texts", REG_MULTI_SZ, "a\0\0\0\0\0"s, ""},
        {"bytes", REG_BINARY, "abcd", ""},
        {"no type", 0, "a\0"s, ""},
        {"big-endian number", 5, "abcd", ""},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(LoadKey({{{u"v", row.m_type, row.m_data}}, {}}), row.m_loaded);
    }
}

TEST(RegistryConfigurationReader, LeavesOutTheDriverValue) {
    FakeRegistryKey key;
    for (const char16_t* name : {u"", u"D", u"dr", u"Dri", u"DRIV", u"drive", u"Driver", u"DRIVERS",
                                 u"DRIVERX", u"RIVER", u"dx"}) {
        key.m_values.push_back({name, REG_DWORD, "\1\0\0\0"s});
    }
    EXPECT_EQ(LoadKey(key), "DRIVERS:1;DRIVERX:1;DX:1;RIVER:1;");
    EXPECT_EQ(LoadKey(key, true, true),
              ":1;D:1;DRIV:1;DRIVERS:1;DRIVERX:1;Dri:1;Driver:1;RIVER:1;dr:1;drive:1;dx:1;");
}

TEST(RegistryConfigurationReader, UpperCasesNamesAsText) {
    const FakeRegistryKey key{{{u"stra\u00DFe", REG_DWORD, "\1\0\0\0"s},
                               {u"Key", REG_DWORD, "\1\0\0\0"s},
                               {u"kEY", REG_DWORD, "\2\0\0\0"s}},
                              {}};
    EXPECT_EQ(LoadKey(key), "KEY:2;STRASSE:1;");
    EXPECT_EQ(LoadKey(key, true), "Key:1;kEY:2;stra\u00DFe:1;");
}

TEST(RegistryConfigurationReader, SkipsAValueThatCannotBeRead) {
    EXPECT_EQ(LoadKey({{{u"a", REG_DWORD, "\1\0\0\0"s},
                        {u"b", REG_DWORD, "\2\0\0\0"s, true},
                        {u"c", REG_DWORD, "\3\0\0\0"s}},
                       {}}),
              "A:1;C:3;");
}

TEST(RegistryConfigurationReader, AppendsAnEmptySectionToo) {
    const orska_wstring empty = L"";
    SectionMap section;
    const RegistryConfigurationReader reader(false);
    reader.LoadConfiguration(section, L"x", L"Key", &empty, false);
    reader.LoadConfiguration(section, L"x", L"Key", nullptr, false);
    EXPECT_THAT(FakeRegistry::Get().m_asked, ElementsAre("HKCU\\Key\\", "HKCU\\Key"));
}

TEST(RegistryConfigurationReader, LoadsEverySubKey) {
    FakeRegistry& registry = FakeRegistry::Get();
    registry.m_keys["HKCU\\Key"] = {{{u"own", REG_DWORD, "\1\0\0\0"s}},
                                    {u"First", u"gone", std::u16string(254, u'x'),
                                     std::u16string(255, u'x'), u"empty", u"Last"}};
    registry.m_keys["HKCU\\Key\\First"].m_values = {{u"a", REG_DWORD, "\2\0\0\0"s},
                                                    {u"driver", REG_DWORD, "\2\0\0\0"s}};
    for (const std::size_t length : {254, 255}) {
        registry.m_keys["HKCU\\Key\\" + std::string(length, 'x')].m_values = {
            {u"x", REG_DWORD, "\3\0\0\0"s}};
    }
    registry.m_keys["HKCU\\Key\\empty"] = {};
    registry.m_keys["HKCU\\Key\\Last"].m_values = {{u"b", REG_SZ, "b\0"s}};
    const RegistryConfigurationReader reader(false);
    ConfigurationMap one;
    for (const wchar_t* name : {L"First", L"missing"}) {
        const orska_wstring section = name;
        reader.LoadConfiguration(one, L"", L"Key", &section);
    }
    EXPECT_EQ(ToText(one), "[FIRST]A:2;");
    ConfigurationMap configuration;
    reader.LoadConfiguration(configuration, L"", L"Key", nullptr);
    EXPECT_EQ(ToText(configuration),
              "[]OWN:1;[EMPTY][FIRST]A:2;[LAST]B=b;[" + std::string(254, 'X') + "]X:3;");
    EXPECT_EQ(registry.m_openKeys, 0);
}

TEST(RegistryConfigurationReader, AKeyThatCannotBeQueriedIsAnError) {
    FakeRegistry& registry = FakeRegistry::Get();
    registry.m_keys["HKCU\\Key"].m_queryFails = true;
    registry.m_keys["HKCU\\Parent"].m_subKeys = {u"Sub"};
    registry.m_keys["HKCU\\Parent\\Sub"].m_queryFails = true;
    const RegistryConfigurationReader reader(false);
    SectionMap section;
    ConfigurationMap configuration;
    const TraceCapture trace;
    EXPECT_EQ(
        ThrownMessage([&] { reader.LoadConfiguration(section, L"", L"Key", nullptr, false); }),
        "RegKeyNotFound");
    EXPECT_EQ(trace.GetText(),
              "`anonymous-namespace'::RegKeyValuesToMap:0\tThrowing: "
              "ProductException(L\"RegKeyNotFound\") RegistryConfigurationReader\n");
    for (const wchar_t* key : {L"Key", L"Parent"}) {
        EXPECT_EQ(
            ThrownMessage([&] { reader.LoadConfiguration(configuration, L"", key, nullptr); }),
            "RegKeyNotFound");
    }
    EXPECT_EQ(registry.m_openKeys, 0);
}

}  // namespace
}  // namespace Orska::Support
