// The registry in hive files, and the rules of its reader.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hivex.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "PlatformAbstraction/settings/RegistryConfigurationReader.h"
#include "PlatformAbstraction/settings/RegistryKey.h"
#include "tests/support/SettingText.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

/// The home directory in the user database below.
static std::string s_userHome;

/// Replaces the C library's.
extern "C" int getpwuid_r(uid_t, passwd* out_entry, char*, size_t, passwd** out_found) {
    out_entry->pw_dir = s_userHome.data();
    *out_found = out_entry;
    return 0;
}

namespace Orska::Support {
namespace {

using namespace std::string_literals;
using Test::RunInProcesses;
using Test::TemporaryDirectory;
using Test::ThrownMessage;
using Test::ToText;
using Test::TraceCapture;
using testing::HasSubstr;

constexpr RegistryKey::Root USER = RegistryKey::Root::CURRENT_USER;
const std::string ONE("\1\0\0\0", 4);

struct HiveValue {
    std::string m_name;  // UTF-8
    std::uint32_t m_type;
    std::string m_data;
};

struct HiveKey {
    std::string m_path;  // UTF-8, "\" between the names; its parents are added too
    std::vector<HiveValue> m_values;
};

hive_node_h AddKey(hive_h* in_hive, const std::string& in_path) {
    hive_node_h node = hivex_root(in_hive);
    std::istringstream names(in_path);
    for (std::string name; std::getline(names, name, '\\');) {
        const hive_node_h child = hivex_node_get_child(in_hive, node, name.c_str());
        node = child != 0 ? child : hivex_node_add_child(in_hive, node, name.c_str());
        EXPECT_NE(node, 0u) << in_path;
    }
    return node;
}

/// Creates a hive, which must not exist yet, with these keys.
void WriteHive(const std::string& in_path, const std::vector<HiveKey>& in_keys) {
    const std::string command = std::string(ORSKA_NEW_HIVE) + " '" + in_path + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    hive_h* hive = hivex_open(in_path.c_str(), HIVEX_OPEN_WRITE);
    ASSERT_NE(hive, nullptr);
    for (const HiveKey& key : in_keys) {
        std::vector<HiveValue> values = key.m_values;
        std::vector<hive_set_value> set;
        for (HiveValue& value : values) {
            set.push_back({value.m_name.data(), static_cast<hive_type>(value.m_type),
                           value.m_data.size(), value.m_data.data()});
        }
        ASSERT_EQ(hivex_node_set_values(hive, AddKey(hive, key.m_path), set.size(), set.data(), 0),
                  0);
    }
    ASSERT_EQ(hivex_commit(hive, nullptr, 0), 0);
    ASSERT_EQ(hivex_close(hive), 0);
}

/// Bytes of a REG_SZ value, with its NUL.
std::string HiveText(const std::u16string& in_text) {
    std::string bytes(reinterpret_cast<const char*>(in_text.data()),
                      in_text.size() * sizeof(char16_t));
    return bytes + std::string(2, '\0');
}

class RegistryKeyLinux : public testing::Test {
protected:
    void SetUp() override {
        setenv("VELTRANE_USER_HIVE", m_user.c_str(), 1);
        setenv("VELTRANE_MACHINE_HIVE", m_machine.c_str(), 1);
    }

    static std::string Load(const wchar_t* in_hive, const orska_wstring& in_key) {
        SectionMap section;
        RegistryConfigurationReader(true).LoadConfiguration(section, in_hive, in_key, nullptr,
                                                            true);
        return ToText(section);
    }

    /// Of the key "Key", with upper-case names.
    static std::string LoadAll() {
        ConfigurationMap configuration;
        RegistryConfigurationReader(false).LoadConfiguration(configuration, L"", L"Key", nullptr);
        return ToText(configuration);
    }

    /// Changes a byte of the user's hive, counted from a name in it.
    void Damage(const std::string& in_name, std::ptrdiff_t in_offset) {
        std::string hive = m_directory.Read("user.hive");
        hive.at(hive.find(in_name) + static_cast<std::size_t>(in_offset)) ^= 1;
        m_directory.Write("user.hive", hive);
    }

    TemporaryDirectory m_directory;
    std::string m_user = m_directory.GetPath("user.hive");
    std::string m_machine = m_directory.GetPath("machine.hive");
};

TEST_F(RegistryKeyLinux, ReturnsValuesAsStored) {
    WriteHive(m_user, {{"Key",
                        {{"zlast", 1, HiveText(u"first")},
                         {"", 1, HiveText(u"default")},
                         {"gr\u00F6\u00DFe", 1, HiveText(u"\u00FC\u20AC")},
                         {"\u6771\u4EAC", 4, "\1\0\0\0"s},
                         {"OneByte", 1, "a"},
                         {"NoData", 1, ""},
                         {"Unterminated", 1, "a\0b\0"s},
                         {"Odd", 1, "a\0b"s},
                         {"Expand", 2, HiveText(u"x")},
                         {"Large", 11, "\1\2\3\4\5\6\7\x80"},
                         {"Long", 1, HiveText(std::u16string(3'000, u'x'))},
                         {"Bytes", 3, "abc"},
                         {"Two NULs", 1, "a\0\0\0\0\0"s},
                         {"Only a NUL", 1, "\0\0"s},
                         {"Greatest", 4, "\xFF\xFF\xFF\xFF"},
                         {"Cut short", 4, "\2\1"},
                         {"Texts", 7, HiveText(u"x")},
                         {"No type", 0, HiveText(u"x")},
                         {"Big-endian", 5, "abcd"}}}});
    EXPECT_EQ(Load(L"", L"Key"),
              "=default;Cut short:258;Greatest:4294967295;Large::9225348980303659521;Long=" +
                  std::string(3'000, 'x') + ";NoData=;Odd=a;OneByte=;Only a NUL=;Two NULs=a\0;"s +
                  "Unterminated=ab;gr\u00F6\u00DFe=\u00FC\u20AC;zlast=first;\u6771\u4EAC:1;");
}

TEST_F(RegistryKeyLinux, ChangesTheCaseOfNamesAndLeavesOutTheDriver) {
    std::vector<HiveValue> values;
    for (const char* name : {"", "D", "dr", "Dri", "DRIV", "drive", "Driver", "DRIVERS", "DRIVERX",
                             "RIVER", "dx", "stra\u00DFe", "Key"}) {
        values.push_back({name, 4, ONE});
    }
    values.push_back({"kEY", 4, "\2\0\0\0"s});
    WriteHive(m_user, {{"Key", values}});
    EXPECT_EQ(LoadAll(), "[]DRIVERS:1;DRIVERX:1;DX:1;KEY:2;RIVER:1;STRASSE:1;");
    EXPECT_EQ(Load(L"", L"Key"),
              ":1;D:1;DRIV:1;DRIVERS:1;DRIVERX:1;Dri:1;Driver:1;Key:1;RIVER:1;dr:1;drive:1;dx:1;"
              "kEY:2;stra\u00DFe:1;");
}

TEST_F(RegistryKeyLinux, LoadsEverySubKeyThatHasAName) {
    const std::string longest(254, 'x');
    WriteHive(m_user, {{"Key", {{"own", 4, ONE}}},
                       {"Key\\First", {{"a", 4, ONE}, {"driver", 4, ONE}}},
                       {"Key\\" + longest, {{"x", 4, ONE}}},
                       {"Key\\" + longest + "y", {{"too long", 4, ONE}}},
                       {"Key\\unnamed", {{"u", 4, ONE}}},
                       {"Key\\empty", {}}});
    Damage("unnamed", 0x48 - 0x4C + 1);  // the length of the name
    const std::string first = "[FIRST]A:1;";
    EXPECT_EQ(LoadAll(), "[]OWN:1;[EMPTY]" + first + "[" + std::string(254, 'X') + "]X:1;");
    ConfigurationMap one;
    for (const wchar_t* name : {L"First", L"missing"}) {
        const orska_wstring section = name;
        RegistryConfigurationReader(false).LoadConfiguration(one, L"", L"Key", &section);
    }
    EXPECT_EQ(ToText(one), first);
}

TEST_F(RegistryKeyLinux, SkipsADamagedValueAndRefusesADamagedKey) {
    WriteHive(m_user, {{"Key", {{"a", 4, ONE}, {"damaged", 4, ONE}, {"c", 4, ONE}}},
                       {"Key\\Below", {{"b", 4, ONE}}}});
    Damage("damaged", -0x14);  // the mark of a value
    EXPECT_EQ(Load(L"", L"Key"), "a:1;c:1;");
    Damage("Below", 0x28 - 0x4C);  // the place of the list of values
    const TraceCapture trace;
    EXPECT_EQ(ThrownMessage([] { LoadAll(); }), "RegKeyNotFound");
    EXPECT_EQ(trace.GetText(),
              "`anonymous-namespace'::RegKeyValuesToMap:0\tThrowing: "
              "ProductException(L\"RegKeyNotFound\") RegistryConfigurationReader\n");
    Damage("Key", 0x1C - 0x4C);  // the place of the list of keys
    EXPECT_EQ(ThrownMessage([] { LoadAll(); }), "RegKeyNotFound");
}

TEST_F(RegistryKeyLinux, SettingsComeFromItOnlyWithoutAnIniFile) {
    WriteHive(m_user, {{"SOFTWARE\\Veltrane\\Driver",
                        {{"LogLevel", 4, "\6\0\0\0"s}, {"Dri", 1, HiveText(u"d")}}}});
    for (const bool hasIniFile : {true, false}) {
        const std::string path = hasIniFile ? m_directory.Write("x.ini", "[Driver]\nLogType=t\n")
                                            : m_directory.GetPath("missing.ini");
        const auto read = [&](int) {
            OrskaSettingReader::Initialize(path, L"Veltrane", L"Driver");
            const bool isRight = OrskaSettingReader::GetLogLevel() == (hasIniFile ? "" : "6") &&
                                 OrskaSettingReader::GetSetting("Dri").empty();
            if (!isRight) _exit(1);
        };
        EXPECT_EQ(RunInProcesses(1, read), 1) << path;
    }
}

TEST_F(RegistryKeyLinux, NeedsBuffersOfTheSizesThatItTells) {
    WriteHive(m_user, {{"Key\\Sub", {}}, {"Key", {{"name", 3, "abc"}}}});
    RegistryKey key;
    ASSERT_TRUE(key.Open(USER, L"Key"));
    RegistryKey::Info info;
    ASSERT_TRUE(key.QueryInfo(info));
    EXPECT_EQ(info.m_subKeyCount, 1u);
    EXPECT_EQ(info.m_longestData, 3u);
    char16_t name[] = u"xxxxx";
    std::byte data[3];
    std::uint32_t length = 0;
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    EXPECT_TRUE(key.EnumValue(0, std::span(name, 5), length, type, data, size));
    EXPECT_EQ(std::u16string(name), u"name");
    EXPECT_EQ(size, 3u);
    EXPECT_FALSE(key.EnumValue(0, std::span(name, 4), length, type, data, size));
    EXPECT_FALSE(key.EnumValue(0, name, length, type, std::span(data, 2), size));
    EXPECT_FALSE(key.EnumValue(1, name, length, type, data, size));
    EXPECT_TRUE(key.EnumKey(0, std::span(name, 4), length));
    EXPECT_EQ(orska_wstring(name, length), L"Sub");
    EXPECT_FALSE(key.EnumKey(0, std::span(name, 3), length));
    EXPECT_FALSE(key.EnumKey(1, name, length));
}

TEST_F(RegistryKeyLinux, FindsKeysAsWindowsDoes) {
    WriteHive(m_user, {{"SOFTWARE\\Veltrane\\\u00C4rger", {{"V", 4, "\1\0\0\0"s}}},
                       {"Stra\u00DFe", {{"S", 4, "\4\0\0\0"s}}},
                       {"\u03A3\u0131k", {{"K", 4, "\5\0\0\0"s}}},
                       {"SOFTWARE\\Veltrane", {{"P", 4, "\2\0\0\0"s}}},
                       {"", {{"R", 4, "\3\0\0\0"s}}}});
    struct Case {
        const wchar_t* m_path;
        const char* m_loaded;
    };
    constexpr Case CASES[] = {
        {L"SOFTWARE\\Veltrane\\\u00C4rger", "V:1;"},
        {L"software\\VELTRANE\\\u00E4RGER", "V:1;"},
        {L"SOFTWARE\\Veltrane\\", "P:2;"},
        {L"SOFTWARE\\\\Veltrane", "P:2;"},
        {L"", "R:3;"},
        {L"\\SOFTWARE\\Veltrane", ""},
        {L"SOFTWARE\\Veltran", ""},
        {L"SOFTWARE\\Veltrane\\x", ""},
        {L"SOFTWARE/Veltrane", ""},
        {L"stra\u00DFE", "S:4;"},
        {L"Strasse", ""},  // another name: units are compared one by one
        {L"\u03C3\u0131K", "K:5;"},
        {L"\u03C3ik", ""},
        {L"\u03C3\u0131\u212A", ""},
    };
    for (const Case& row : CASES) {
        SCOPED_TRACE(orska_wstring(row.m_path).GetAsUtf8());
        EXPECT_EQ(Load(L"", row.m_path), row.m_loaded);
    }
    ConfigurationMap configuration;
    RegistryConfigurationReader(false).LoadConfiguration(configuration, L"", L"SOFTWARE\\Veltrane",
                                                         nullptr);
    EXPECT_EQ(ToText(configuration), "[]P:2;[\u00C4RGER]V:1;");
}

TEST_F(RegistryKeyLinux, EachRootHasItsHive) {
    WriteHive(m_machine, {{"Both", {{"V", 4, "\2\0\0\0"s}}}, {"Machine", {{"V", 4, "\2\0\0\0"s}}}});
    EXPECT_EQ(Load(L"", L"Both"), "V:2;");
    WriteHive(m_user, {{"Both", {{"V", 4, "\1\0\0\0"s}}}});
    EXPECT_EQ(Load(L"", L"Both"), "V:1;");
    EXPECT_EQ(Load(L"HKEY_LOCAL_MACHINE", L"Both"), "V:2;");
    EXPECT_EQ(Load(L"hkey_local_machine", L"Both"), "V:1;");
    EXPECT_EQ(Load(L"anything", L"Both"), "V:1;");
    EXPECT_EQ(Load(L"", L"Machine"), "V:2;");
    EXPECT_EQ(Load(L"HKEY_CURRENT_USER", L"Machine"), "");
}

TEST_F(RegistryKeyLinux, LooksForTheUserHiveInTheConfigurationDirectory) {
    const std::string xdg = m_directory.GetPath("xdg");
    const std::string home = m_directory.GetPath("home");
    std::filesystem::create_directories(xdg + "/veltrane");
    std::filesystem::create_directories(home + "/.config/veltrane");
    WriteHive(xdg + "/veltrane/user.hive", {{"Key", {{"xdg", 1, ""}}}});
    WriteHive(home + "/.config/veltrane/user.hive", {{"Key", {{"home", 1, ""}}}});
    unsetenv("VELTRANE_USER_HIVE");
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", xdg.c_str(), 1);
    EXPECT_EQ(Load(L"", L"Key"), "xdg=;");
    for (const char* unusable : {"", "relative"}) {
        setenv("XDG_CONFIG_HOME", unusable, 1);
        EXPECT_EQ(Load(L"", L"Key"), "home=;");
    }
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(Load(L"", L"Key"), "home=;");
    s_userHome = home;
    unsetenv("HOME");
    EXPECT_EQ(Load(L"", L"Key"), "home=;");
    for (const char* unusable : {"", "relative"}) {
        setenv("HOME", unusable, 1);
        EXPECT_EQ(Load(L"", L"Key"), "home=;");
    }
}

TEST_F(RegistryKeyLinux, AMissingHiveIsAMissingKey) {
    const TraceCapture trace;
    EXPECT_EQ(Load(L"", L"Key"), "");
    setenv("VELTRANE_USER_HIVE", m_directory.Write("file", "").append("/below").c_str(), 1);
    EXPECT_EQ(Load(L"", L"Key"), "");
    EXPECT_EQ(trace.GetText(), "");
}

TEST_F(RegistryKeyLinux, AHiveThatCannotBeReadIsReportedAndCountsAsMissing) {
    WriteHive(m_user, {{"Key", {{"V", 4, "\1\0\0\0"s}}}});
    const std::string good = m_directory.Read("user.hive");
    const std::string loop = m_directory.GetPath("loop");
    std::filesystem::create_symlink(loop, loop);
    const std::string fifo = m_directory.GetPath("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::string wrongChecksum = good;
    ++wrongChecksum[0x30];
    std::string wrongBin = good;
    wrongBin[0x1000] = 'x';
    const std::string files[] = {
        m_directory.Write("empty", ""),
        m_directory.Write("text", "Windows Registry Editor Version 5.00\n"),
        m_directory.Write("short", good.substr(0, 0x1800)),
        m_directory.Write("checksum", wrongChecksum),
        m_directory.Write("bin", wrongBin),
        m_directory.GetPath(),
        fifo,
        loop,
    };
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        setenv("VELTRANE_USER_HIVE", file.c_str(), 1);
        const TraceCapture trace;
        EXPECT_EQ(Load(L"HKEY_CURRENT_USER", L"Key"), "");
        EXPECT_THAT(trace.GetText(),
                    testing::StartsWith("Orska::Support::RegistryKey::Open:0\tCannot read the "
                                        "hive '" +
                                        file + "': "));
    }
}

TEST_F(RegistryKeyLinux, SurvivesDamageAnywhereInAHive) {
    WriteHive(m_user, {{"Key\\A", {{"V", 1, HiveText(u"text")}, {"W", 4, "\1\0\0\0"s}}},
                       {"Key\\B", {{"L", 1, HiveText(std::u16string(3000, u'x'))}}}});
    const std::string good = m_directory.Read("user.hive");
    const RegistryConfigurationReader reader(false);
    int changed = 0;
    for (std::size_t position = 0x1000; position < good.size(); ++position) {
        if (good[position] == '\0' || good[position] == 'x') {
            continue;  // unused space and the long text
        }
        for (const char damage : {'\0', '\xFF', '\x08'}) {
            // Written in place: many file systems wait for the disk when a file is replaced.
            std::fstream file(m_user, std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(static_cast<std::streamoff>(position)).put(damage);
            file.close();
            ConfigurationMap configuration;
            try {
                reader.LoadConfiguration(configuration, L"HKEY_CURRENT_USER", L"Key", nullptr);
            } catch (const ProductException& exception) {
                EXPECT_EQ(exception.GetMessageKeyOrText(), L"RegKeyNotFound");
            }
            changed += configuration.size() == 3 ? 0 : 1;
        }
        std::fstream file(m_user, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(position)).put(good[position]);
    }
    EXPECT_GT(changed, 50);
}

}  // namespace
}  // namespace Orska::Support
