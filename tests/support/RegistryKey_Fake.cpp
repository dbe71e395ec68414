#include "tests/support/RegistryKey_Fake.h"

#include <algorithm>
#include <cstring>

#include "PlatformAbstraction/settings/RegistryKey.h"

namespace Orska::Test {

FakeRegistry& FakeRegistry::Get() {
    static FakeRegistry s_registry;
    return s_registry;
}

}  // namespace Orska::Test

namespace Orska::Support {

using Test::FakeRegistry;
using Test::FakeRegistryKey;
using Test::FakeRegistryValue;

struct RegistryKey::State {
    std::string m_path;
    const FakeRegistryKey* m_key;

    State(const std::string& in_path, const FakeRegistryKey* in_key)
        : m_path(in_path), m_key(in_key) {
        ++FakeRegistry::Get().m_openKeys;
    }
    ~State() { --FakeRegistry::Get().m_openKeys; }
};

namespace {

const FakeRegistryKey* Find(const std::string& in_path) {
    FakeRegistry& registry = FakeRegistry::Get();
    registry.m_asked.push_back(in_path);
    const auto found = registry.m_keys.find(in_path);
    return found == registry.m_keys.end() ? nullptr : &found->second;
}

bool CopyName(const std::u16string& in_name, std::span<char16_t> out_name,
              std::uint32_t& out_length) {
    if (in_name.size() >= out_name.size()) {
        return false;
    }
    std::copy(in_name.begin(), in_name.end(), out_name.begin());
    out_length = static_cast<std::uint32_t>(in_name.size());
    return true;
}

}  // namespace

RegistryKey::RegistryKey() noexcept = default;
RegistryKey::RegistryKey(RegistryKey&&) noexcept = default;
RegistryKey& RegistryKey::operator=(RegistryKey&&) noexcept = default;
RegistryKey::~RegistryKey() = default;

bool RegistryKey::Open(Root in_root, const orska_wstring& in_path) {
    const std::string path =
        (in_root == Root::CURRENT_USER ? "HKCU\\" : "HKLM\\") + in_path.GetAsUtf8();
    if (const FakeRegistryKey* key = Find(path)) {
        m_state = std::make_unique<State>(path, key);
    }
    return m_state != nullptr;
}

bool RegistryKey::OpenSubKey(const orska_wstring& in_path, RegistryKey& out_key) const {
    const std::string path = m_state->m_path + "\\" + in_path.GetAsUtf8();
    if (const FakeRegistryKey* key = Find(path)) {
        out_key.m_state = std::make_unique<State>(path, key);
        return true;
    }
    return false;
}

bool RegistryKey::QueryInfo(Info& out_info) const {
    const FakeRegistryKey& key = *m_state->m_key;
    out_info = {static_cast<std::uint32_t>(key.m_subKeys.size()),
                static_cast<std::uint32_t>(key.m_values.size()), 0, 0};
    for (const FakeRegistryValue& value : key.m_values) {
        out_info.m_longestValueName =
            std::max(out_info.m_longestValueName, static_cast<std::uint32_t>(value.m_name.size()));
        out_info.m_longestData =
            std::max(out_info.m_longestData, static_cast<std::uint32_t>(value.m_data.size()));
    }
    return !key.m_queryFails;
}

bool RegistryKey::EnumValue(std::uint32_t in_index, std::span<char16_t> out_name,
                            std::uint32_t& out_nameLength, std::uint32_t& out_type,
                            std::span<std::byte> out_data, std::uint32_t& out_dataLength) const {
    const FakeRegistryValue& value = m_state->m_key->m_values.at(in_index);
    if (value.m_enumFails || !CopyName(value.m_name, out_name, out_nameLength) ||
        value.m_data.size() > out_data.size()) {
        return false;
    }
    std::memcpy(out_data.data(), value.m_data.data(), value.m_data.size());
    out_type = value.m_type;
    out_dataLength = static_cast<std::uint32_t>(value.m_data.size());
    return true;
}

bool RegistryKey::EnumKey(std::uint32_t in_index, std::span<char16_t> out_name,
                          std::uint32_t& out_nameLength) const {
    return CopyName(m_state->m_key->m_subKeys.at(in_index), out_name, out_nameLength);
}

}  // namespace Orska::Support
