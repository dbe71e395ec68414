// Keys of the real registry, below a scratch key.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "PlatformAbstraction/settings/RegistryConfigurationReader.h"
#include "tests/support/SettingText.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {
namespace {

using Test::ToText;

std::wstring MakeKeyName() {
    return L"Software\\Orska test " + std::to_wstring(GetCurrentProcessId());
}

/// A key under one root, removed at the end with everything below it.
class ScratchKey {
public:
    explicit ScratchKey(HKEY in_root) : m_root(in_root), m_name(MakeKeyName()) {
        EXPECT_EQ(RegCreateKeyExW(m_root, m_name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  &m_key, nullptr),
                  ERROR_SUCCESS);
    }
    ~ScratchKey() {
        RegCloseKey(m_key);
        RegDeleteTreeW(m_root, m_name.c_str());
    }
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    orska_wstring GetName() const { return m_name; }

    void Set(const wchar_t* in_subKey, const wchar_t* in_name, DWORD in_type,
             const std::string& in_data) const {
        EXPECT_EQ(RegSetKeyValueW(m_key, in_subKey, in_name, in_type, in_data.data(),
                                  static_cast<DWORD>(in_data.size())),
                  ERROR_SUCCESS);
    }

    static std::string Text(const std::wstring& in_text) {
        return {reinterpret_cast<const char*>(in_text.c_str()), (in_text.size() + 1) * 2};
    }

private:
    HKEY m_root;
    std::wstring m_name;
    HKEY m_key = nullptr;
};

const std::string ONE("\1\0\0\0", 4);

TEST(RegistryKey, OpensByPath) {
    const ScratchKey scratch(HKEY_CURRENT_USER);
    scratch.Set(nullptr, L"v", REG_DWORD, ONE);
    scratch.Set(L"Sub\\Deeper", L"deep", REG_DWORD, ONE);
    const std::wstring name = MakeKeyName();
    const std::pair<std::wstring, const char*> rows[] = {
        {name, "V:1;"},         {name + L"\\", "V:1;"}, {name + L"\\sUB\\dEEPER", "DEEP:1;"},
        {name + L"\\none", ""}, {L"\\" + name, ""},     {name + std::wstring(L"\0x", 2), ""},
    };
    for (const auto& [path, loaded] : rows) {
        SectionMap map;
        RegistryConfigurationReader(false).LoadConfiguration(map, L"", path, nullptr, false);
        EXPECT_EQ(ToText(map), loaded) << orska_wstring(path).GetAsUtf8();
    }
}

TEST(RegistryKey, LoadsValuesAndSubKeys) {
    const ScratchKey scratch(HKEY_CURRENT_USER);
    const std::wstring longest(254, L'x');
    scratch.Set(nullptr, L"a \u00FC\u20AC", REG_SZ, ScratchKey::Text(L"text"));
    scratch.Set(nullptr, L"b", REG_SZ, ScratchKey::Text(L"longer text"));
    scratch.Set(L"First", L"x", REG_DWORD, ONE);
    scratch.Set(longest.c_str(), L"x", REG_DWORD, ONE);
    scratch.Set((longest + L"y").c_str(), L"x", REG_DWORD, ONE);
    ConfigurationMap configuration;
    RegistryConfigurationReader(false).LoadConfiguration(configuration, L"HKEY_CURRENT_USER",
                                                         scratch.GetName(), nullptr);
    EXPECT_EQ(ToText(configuration),
              "[]A \u00DC\u20AC=text;B=longer text;[FIRST]X:1;[" + std::string(254, 'X') + "]X:1;");
}

TEST(RegistryKey, TheReaderTakesTheUsersKeyBeforeTheMachines) {
    const ScratchKey machine(HKEY_LOCAL_MACHINE);
    machine.Set(L"Section", L"Level", REG_DWORD, ONE);
    const RegistryConfigurationReader reader(false);
    const orska_wstring section(L"Section");
    const auto load = [&](const wchar_t* in_hive) {
        SectionMap map;
        reader.LoadConfiguration(map, in_hive, machine.GetName(), &section, false);
        return ToText(map);
    };
    EXPECT_EQ(load(L""), "LEVEL:1;");
    const ScratchKey user(HKEY_CURRENT_USER);
    user.Set(L"Section", L"LogPath", REG_SZ, ScratchKey::Text(L"C:\\\u65E5\u672C"));
    user.Set(L"Section", L"Large", REG_QWORD, std::string("\0\0\0\0\1\0\0\0", 8));
    user.Set(L"Section", L"Expanded", REG_EXPAND_SZ, ScratchKey::Text(L"%TEMP%"));
    user.Set(L"Section", L"Driver", REG_SZ, ScratchKey::Text(L"left out"));
    EXPECT_EQ(load(L""), "LARGE::4294967296;LOGPATH=C:\\\xE6\x97\xA5\xE6\x9C\xAC;");
    EXPECT_EQ(load(L"HKEY_LOCAL_MACHINE"), "LEVEL:1;");
}

}  // namespace
}  // namespace Orska::Support
