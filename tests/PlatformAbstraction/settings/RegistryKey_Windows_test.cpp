// Keys of the real registry, below a scratch key.
#include <gtest/gtest.h>

#include <cstring>

#include <string>
#include <vector>

#include "PlatformAbstraction/settings/RegistryConfigurationReader.h"
#include "PlatformAbstraction/settings/RegistryKey.h"
#include "tests/support/SettingText.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {
namespace {

using Test::ToText;
using enum RegistryKey::Root;

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
    scratch.Set(L"Sub\\Deeper", L"v", REG_DWORD, ONE);
    const std::wstring name = MakeKeyName();
    const struct {
        std::wstring m_path;
        bool m_isThere;
    } rows[] = {
        {name, true},
        {name + L"\\", true},
        {name + L"\\sUB\\dEEPER", true},
        {name + L"\\none", false},
        {L"\\" + name, false},
        {name + std::wstring(L"\0x", 2), false},
        {L"", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(orska_wstring(row.m_path).GetAsUtf8());
        RegistryKey key;
        EXPECT_EQ(key.Open(CURRENT_USER, row.m_path), row.m_isThere);
    }
    RegistryKey key;
    EXPECT_FALSE(key.Open(LOCAL_MACHINE, name));
    ASSERT_TRUE(key.Open(CURRENT_USER, name));
    RegistryKey subKey;
    EXPECT_FALSE(key.OpenSubKey(L"Deeper", subKey));
    EXPECT_TRUE(key.OpenSubKey(L"Sub\\Deeper", subKey));
    const RegistryKey moved = std::move(subKey);
    RegistryKey::Info info;
    EXPECT_TRUE(moved.QueryInfo(info));
    EXPECT_EQ(info.m_valueCount, 1u);
}

TEST(RegistryKey, ReturnsValuesAndSubKeys) {
    const ScratchKey scratch(HKEY_CURRENT_USER);
    scratch.Set(nullptr, L"a \u00FC\u20AC", REG_SZ, ScratchKey::Text(L"text"));
    scratch.Set(L"First", L"x", REG_DWORD, ONE);
    scratch.Set(L"Second", L"x", REG_DWORD, ONE);
    RegistryKey key;
    ASSERT_TRUE(key.Open(CURRENT_USER, scratch.GetName()));
    RegistryKey::Info info;
    ASSERT_TRUE(key.QueryInfo(info));
    EXPECT_EQ(info.m_subKeyCount, 2u);
    EXPECT_EQ(info.m_valueCount, 1u);
    EXPECT_EQ(info.m_longestValueName, 4u);
    EXPECT_EQ(info.m_longestData, 10u);

    char16_t name[7];
    std::byte data[10];
    std::uint32_t length = 0, type = 0, size = 0;
    ASSERT_TRUE(key.EnumValue(0, name, length, type, data, size));
    EXPECT_EQ(std::u16string(name, length), u"a \u00FC\u20AC");
    EXPECT_EQ(type, RegistryKey::TYPE_TEXT);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(std::memcmp(data, L"text", 10), 0);
    EXPECT_FALSE(key.EnumValue(1, name, length, type, data, size));
    EXPECT_FALSE(key.EnumValue(0, std::span(name, 4), length, type, data, size));
    EXPECT_FALSE(key.EnumValue(0, name, length, type, std::span(data, 9), size));

    ASSERT_TRUE(key.EnumKey(1, name, length));
    EXPECT_EQ(std::u16string(name, length), u"Second");
    EXPECT_FALSE(key.EnumKey(1, std::span(name, 6), length));
    EXPECT_FALSE(key.EnumKey(2, name, length));
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
