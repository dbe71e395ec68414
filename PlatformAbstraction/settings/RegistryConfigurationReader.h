/// Reads settings from a key of the Windows registry.
///
/// Texts (REG_SZ) and numbers (REG_DWORD, REG_QWORD) are read; values of other types are ignored. A
/// reader keeps nothing open between calls and is used by one thread at a time.
#ifndef PLATFORMABSTRACTION_REGISTRYCONFIGURATIONREADER_H
#define PLATFORMABSTRACTION_REGISTRYCONFIGURATIONREADER_H

#include "SettingValue.h"

namespace Orska::Support {

class RegistryKey;

class RegistryConfigurationReader {
public:
    /// @param in_isCaseSensitive  false: value names become upper case
    explicit RegistryConfigurationReader(bool in_isCaseSensitive)
        : m_isCaseSensitive(in_isCaseSensitive) {}
    virtual ~RegistryConfigurationReader() = default;

    /// Adds the values of one key; nothing when the key cannot be opened.
    /// @param in_hiveName  "HKEY_LOCAL_MACHINE", or any other text for the current user; if empty,
    ///        the local machine is tried when the current user has no such key
    /// @param in_section  the last part of the key's path, appended even if empty; null: none
    /// @param in_includeDriverValue  false: the default value and values named "DRIVER" or a prefix
    ///        of it, in any case, are left out
    /// @throws ProductException "RegKeyNotFound" when the open key cannot be queried
    void LoadConfiguration(SectionMap& io_section, const orska_wstring& in_hiveName,
                           const orska_wstring& in_keyPath, const orska_wstring* in_section,
                           bool in_includeDriverValue) const;

    /// Adds the values of one section under its name in upper case; or, when `in_section` is null,
    /// of every sub-key under its name in upper case and of the key itself under the empty name.
    void LoadConfiguration(ConfigurationMap& io_configuration, const orska_wstring& in_hiveName,
                           const orska_wstring& in_keyPath, const orska_wstring* in_section) const;

private:
    void LoadSubKeys(ConfigurationMap& io_configuration, const RegistryKey& in_key) const;

    bool m_isCaseSensitive;
};

}  // namespace Orska::Support

#endif
