#include "PlatformAbstraction/settings/RegistryConfigurationReader.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/settings/RegistryKey.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\RegistryConfigurationReader";
/// A sub-key with a longer name, its NUL included, is skipped.
constexpr std::size_t SUB_KEY_NAME_SIZE = 255;

bool OpenKey(const orska_wstring& in_hiveName, const orska_wstring& in_path, RegistryKey& out_key) {
    using enum RegistryKey::Root;
    if (in_hiveName == L"HKEY_LOCAL_MACHINE") {
        return out_key.Open(LOCAL_MACHINE, in_path);
    }
    return out_key.Open(CURRENT_USER, in_path) ||
           (in_hiveName.IsEmpty() && out_key.Open(LOCAL_MACHINE, in_path));
}

RegistryKey::Info QueryInfo(const RegistryKey& in_key, const TraceSite& in_site) {
    RegistryKey::Info info = {};
    if (!in_key.QueryInfo(info)) {
        ORSKA_THROW(in_site, ProductException(L"RegKeyNotFound"));
    }
    return info;
}

/// True for a prefix of "DRIVER", all of it included. Only the length of the name is compared, on
/// purpose: "Dri" is left out and "DRIVERS" is kept.
bool IsDriverValue(const orska_wstring& in_upperCaseName) {
    return std::u16string_view(u"DRIVER").starts_with(in_upperCaseName.GetView());
}

orska_wstring ToText(const std::byte* in_data, std::size_t in_size) {
    std::u16string text(in_size / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), in_data, text.size() * sizeof(char16_t));
    if (!text.empty() && text.back() == u'\0') {
        text.pop_back();
    }
    return orska_wstring(text);
}

/// The number in the first bytes; missing bytes count as zero.
template <typename Number>
Number ToNumber(const std::byte* in_data, std::size_t in_size) {
    Number number = 0;
    std::memcpy(&number, in_data, std::min(in_size, sizeof number));
    return number;
}

std::optional<SettingValue> ToSettingValue(std::uint32_t in_type, const std::byte* in_data,
                                           std::size_t in_size) {
    switch (in_type) {
        case RegistryKey::TYPE_TEXT:
            return SettingValue(ToText(in_data, in_size));
        case RegistryKey::TYPE_UINT32:
            return SettingValue(ToNumber<std::uint32_t>(in_data, in_size));
        case RegistryKey::TYPE_UINT64:
            return SettingValue(ToNumber<std::uint64_t>(in_data, in_size));
        default:
            return std::nullopt;
    }
}

void RegKeyValuesToMap(const RegistryKey& in_key, SectionMap& io_section, bool in_isCaseSensitive,
                       bool in_includeDriverValue) {
    const RegistryKey::Info info =
        QueryInfo(in_key, TraceSite{"`anonymous-namespace'::RegKeyValuesToMap", SOURCE, 0});
    std::vector<char16_t> name(std::size_t{info.m_longestValueName} + 1);
    std::vector<std::byte> data(std::size_t{info.m_longestData} + 2);
    for (std::uint32_t index = 0; index < info.m_valueCount; ++index) {
        std::uint32_t nameLength = 0;
        std::uint32_t type = 0;
        std::uint32_t size = 0;
        if (!in_key.EnumValue(index, name, nameLength, type, data, size)) {
            continue;
        }
        const orska_wstring storedName(name.data(), nameLength);
        orska_wstring upperCaseName = storedName;
        upperCaseName.ToUpper();
        // The empty name, the key's default value, is a prefix too.
        if (!in_includeDriverValue && IsDriverValue(upperCaseName)) {
            continue;
        }
        if (const auto value = ToSettingValue(type, data.data(), size)) {
            io_section.Set(in_isCaseSensitive ? storedName : upperCaseName, *value);
        }
    }
}

}  // namespace

void RegistryConfigurationReader::LoadConfiguration(SectionMap& io_section,
                                                    const orska_wstring& in_hiveName,
                                                    const orska_wstring& in_keyPath,
                                                    const orska_wstring* in_section,
                                                    bool in_includeDriverValue) const {
    RegistryKey key;
    const orska_wstring path =
        in_section == nullptr ? in_keyPath : in_keyPath + orska_wstring(L"\\") + *in_section;
    if (OpenKey(in_hiveName, path, key)) {
        RegKeyValuesToMap(key, io_section, m_isCaseSensitive, in_includeDriverValue);
    }
}

void RegistryConfigurationReader::LoadConfiguration(ConfigurationMap& io_configuration,
                                                    const orska_wstring& in_hiveName,
                                                    const orska_wstring& in_keyPath,
                                                    const orska_wstring* in_section) const {
    RegistryKey key;
    if (in_section != nullptr) {
        if (OpenKey(in_hiveName, in_keyPath + orska_wstring(L"\\") + *in_section, key)) {
            RegKeyValuesToMap(key, io_configuration[orska_wstring(*in_section).ToUpper()],
                              m_isCaseSensitive, false);
        }
    } else if (OpenKey(in_hiveName, in_keyPath, key)) {
        LoadSubKeys(io_configuration, key);
        RegKeyValuesToMap(key, io_configuration[orska_wstring("")], m_isCaseSensitive, false);
    }
}

void RegistryConfigurationReader::LoadSubKeys(ConfigurationMap& io_configuration,
                                              const RegistryKey& in_key) const {
    const RegistryKey::Info info = QueryInfo(
        in_key,
        TraceSite{"Orska::Support::RegistryConfigurationReader::LoadConfiguration", SOURCE, 0});
    char16_t name[SUB_KEY_NAME_SIZE];
    for (std::uint32_t index = 0; index < info.m_subKeyCount; ++index) {
        std::uint32_t nameLength = 0;
        if (!in_key.EnumKey(index, name, nameLength)) {
            continue;
        }
        const orska_wstring subKeyName(name, nameLength);
        RegistryKey subKey;
        if (in_key.OpenSubKey(subKeyName, subKey)) {
            RegKeyValuesToMap(subKey, io_configuration[orska_wstring(subKeyName).ToUpper()],
                              m_isCaseSensitive, false);
        }
    }
}

}  // namespace Orska::Support
