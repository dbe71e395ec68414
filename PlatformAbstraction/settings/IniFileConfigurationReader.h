/// Reads settings from an INI file.
///
/// A line is cut at the first "#" or ";", even inside quotes, and trimmed. The rest is a section
/// header in brackets, or a key and a value around the first "="; a value may be in double quotes
/// or apostrophes. Section names and keys are upper-cased byte by byte (ASCII letters only). Bytes
/// are read in GetByteTextEncoding. A reader keeps nothing open between calls and is used by one
/// thread at a time.
#ifndef PLATFORMABSTRACTION_INIFILECONFIGURATIONREADER_H
#define PLATFORMABSTRACTION_INIFILECONFIGURATIONREADER_H

#include "SettingValue.h"

namespace Orska::Support {

class IniFileConfigurationReader {
public:
    /// @param in_isCaseSensitive  false: keys become upper case
    /// @param in_resolveIniPathFromModule  true: a relative path starts at the directory of this
    ///        library's file, and names no file if that is not known; false: it starts at the
    ///        working directory
    IniFileConfigurationReader(bool in_isCaseSensitive, bool in_resolveIniPathFromModule)
        : m_isCaseSensitive(in_isCaseSensitive),
          m_resolveIniPathFromModule(in_resolveIniPathFromModule) {}
    virtual ~IniFileConfigurationReader() = default;

    /// Sets `out_section` to the values of one section; to none when the file has no such section.
    /// @param in_section  compared in upper case with the names in the file
    /// @return false when the path is empty or the file cannot be opened; nothing is changed then
    /// @throws ProductException "IniParseError" (file name, line number) for a malformed line or a
    ///         failing read; nothing is changed
    bool LoadConfiguration(SectionMap& out_section, const orska_wstring& in_filePath,
                           const orska_wstring& in_section) const;

    /// Adds the values of one section, or of all when `in_section` is null. A section without keys
    /// is not added. When a line is malformed, the values before it are added.
    bool LoadConfiguration(ConfigurationMap& io_configuration, const orska_wstring& in_filePath,
                           const orska_wstring* in_section) const;

private:
    orska_wstring ResolvePath(const orska_wstring& in_filePath) const;

    bool m_isCaseSensitive;
    bool m_resolveIniPathFromModule;
};

}  // namespace Orska::Support

#endif
