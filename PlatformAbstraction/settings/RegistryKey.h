/// The calls on one open key of the Windows registry; RegistryConfigurationReader has the rules.
///
/// On Linux the registry is read from hive files: HKEY_CURRENT_USER from the file that
/// VELTRANE_USER_HIVE names, else veltrane/user.hive under $XDG_CONFIG_HOME (or ~/.config);
/// HKEY_LOCAL_MACHINE from the file that VELTRANE_MACHINE_HIVE names, else
/// /etc/veltrane/machine.hive. A missing hive is a missing key; one that cannot be read is reported
/// in the trace and counts as missing. A key is used by one thread at a time and owns its handles.
#ifndef PLATFORMABSTRACTION_REGISTRYKEY_H
#define PLATFORMABSTRACTION_REGISTRYKEY_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

class RegistryKey {
public:
    enum class Root { CURRENT_USER, LOCAL_MACHINE };

    /// Value types with a meaning for settings, by their registry numbers.
    static constexpr std::uint32_t TYPE_TEXT = 1;     ///< REG_SZ: UTF-16LE
    static constexpr std::uint32_t TYPE_UINT32 = 4;   ///< REG_DWORD
    static constexpr std::uint32_t TYPE_UINT64 = 11;  ///< REG_QWORD

    struct Info {
        std::uint32_t m_subKeyCount;
        std::uint32_t m_valueCount;
        std::uint32_t m_longestValueName;  ///< code units, without a NUL
        std::uint32_t m_longestData;       ///< bytes
    };

    RegistryKey() noexcept;
    RegistryKey(RegistryKey&&) noexcept;
    RegistryKey& operator=(RegistryKey&&) noexcept;
    ~RegistryKey();

    /// @param in_path  names of keys, separated by "\"; a separator at the end is ignored
    /// @return whether it was opened for reading; it must not be open before
    bool Open(Root in_root, const orska_wstring& in_path);
    /// Opens a direct or deeper sub-key of this open key.
    bool OpenSubKey(const orska_wstring& in_path, RegistryKey& out_key) const;

    bool QueryInfo(Info& out_info) const;
    /// Reads the value at an index, in the order in which values were added.
    /// @param out_name  the name and a NUL; at least one code unit longer than the name
    /// @param out_nameLength  code units, without the NUL
    /// @param out_dataLength  bytes
    /// @return false when there is no such value or a buffer is too small
    bool EnumValue(std::uint32_t in_index, std::span<char16_t> out_name,
                   std::uint32_t& out_nameLength, std::uint32_t& out_type,
                   std::span<std::byte> out_data, std::uint32_t& out_dataLength) const;
    /// Reads the name of the sub-key at an index, with a NUL after it.
    bool EnumKey(std::uint32_t in_index, std::span<char16_t> out_name,
                 std::uint32_t& out_nameLength) const;

private:
    struct State;  ///< each body has its own

    std::unique_ptr<State> m_state;
};

}  // namespace Orska::Support

#endif
