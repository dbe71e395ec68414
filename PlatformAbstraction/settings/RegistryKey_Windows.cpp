#include "PlatformAbstraction/settings/RegistryKey.h"

#include <cwchar>
#include <string>
#include <utility>

#include "PlatformAbstraction/base/WindowsHandle.h"

namespace Orska::Support {

namespace {

static_assert(RegistryKey::TYPE_TEXT == REG_SZ && RegistryKey::TYPE_UINT32 == REG_DWORD &&
              RegistryKey::TYPE_UINT64 == REG_QWORD);

/// Opens for reading. A path with a NUL is refused: truncated, it would name another key.
RegistryHandle OpenKey(HKEY in_parent, const orska_wstring& in_path) {
    const std::u16string_view view = in_path.GetView();
    const std::wstring path(view.begin(), view.end());
    LONG error = ERROR_SUCCESS;
    return path.find(L'\0') == std::wstring::npos
               ? OpenRegistryKey(in_parent, path.c_str(), KEY_READ, error)
               : RegistryHandle();
}

wchar_t* ToBuffer(std::span<char16_t> in_text) {
    return reinterpret_cast<wchar_t*>(in_text.data());
}

}  // namespace

struct RegistryKey::State {
    RegistryHandle m_key;
};

RegistryKey::RegistryKey() noexcept = default;
RegistryKey::RegistryKey(RegistryKey&&) noexcept = default;
RegistryKey& RegistryKey::operator=(RegistryKey&&) noexcept = default;
RegistryKey::~RegistryKey() = default;

bool RegistryKey::Open(Root in_root, const orska_wstring& in_path) {
    const HKEY root = in_root == Root::LOCAL_MACHINE ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    RegistryHandle key = OpenKey(root, in_path);
    if (key.IsOpen()) {
        m_state.reset(new State{std::move(key)});
        return true;
    }
    return false;
}

bool RegistryKey::OpenSubKey(const orska_wstring& in_path, RegistryKey& out_key) const {
    RegistryHandle key = OpenKey(m_state->m_key.Get(), in_path);
    if (key.IsOpen()) {
        out_key.m_state.reset(new State{std::move(key)});
        return true;
    }
    return false;
}

bool RegistryKey::QueryInfo(Info& out_info) const {
    DWORD subKeys = 0;
    DWORD values = 0;
    DWORD longestName = 0;
    DWORD longestData = 0;
    const LSTATUS result =
        RegQueryInfoKeyW(m_state->m_key.Get(), nullptr, nullptr, nullptr, &subKeys, nullptr,
                         nullptr, &values, &longestName, &longestData, nullptr, nullptr);
    out_info = {subKeys, values, longestName, longestData};
    return result == ERROR_SUCCESS;
}

bool RegistryKey::EnumValue(std::uint32_t in_index, std::span<char16_t> out_name,
                            std::uint32_t& out_nameLength, std::uint32_t& out_type,
                            std::span<std::byte> out_data, std::uint32_t& out_dataLength) const {
    DWORD nameLength = static_cast<DWORD>(out_name.size());
    DWORD type = 0;
    DWORD dataLength = static_cast<DWORD>(out_data.size());
    if (RegEnumValueW(m_state->m_key.Get(), in_index, ToBuffer(out_name), &nameLength, nullptr,
                      &type, reinterpret_cast<BYTE*>(out_data.data()),
                      &dataLength) != ERROR_SUCCESS) {
        return false;
    }
    out_nameLength = nameLength;
    out_type = type;
    out_dataLength = dataLength;
    return true;
}

bool RegistryKey::EnumKey(std::uint32_t in_index, std::span<char16_t> out_name,
                          std::uint32_t& out_nameLength) const {
    wchar_t* name = ToBuffer(out_name);
    if (RegEnumKeyW(m_state->m_key.Get(), in_index, name, static_cast<DWORD>(out_name.size())) !=
        ERROR_SUCCESS) {
        return false;
    }
    out_nameLength = static_cast<std::uint32_t>(std::wcslen(name));
    return true;
}

}  // namespace Orska::Support
