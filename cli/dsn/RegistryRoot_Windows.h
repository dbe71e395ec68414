/// The keys of the Windows registry in which ODBC keeps drivers and DSNs. Text is UTF-8.
#ifndef CLI_REGISTRYROOT_WINDOWS_H
#define CLI_REGISTRYROOT_WINDOWS_H

#include <string>
#include <vector>

#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

/// One of ODBC's keys: ODBC.INI of the user or of the system, or ODBCINST.INI.
class RegistryRoot {
public:
    static RegistryRoot OfUserDsns();
    static RegistryRoot OfSystemDsns();
    static RegistryRoot OfDrivers();

    /// For people: "HKEY_CURRENT_USER\Software\ODBC\ODBC.INI".
    std::string GetName() const;

    struct Section {
        std::string m_name;
        std::vector<Entry> m_entries;
        /// A value that is no text, which nothing here could write back; empty: there is none.
        std::string m_foreignValue;
    };

    /// @throws CommandError EXIT_FAILED with the key and the reason
    std::vector<std::string> GetSectionNames() const;
    /// @return false when there is no such section
    /// @throws CommandError as above
    bool Read(const std::string& in_section, Section& out_section) const;

    /// The empty value name is the default value. Each makes the section when there is none.
    /// @return the system's error, 0 for none
    unsigned long Write(const std::string& in_section, const std::string& in_key,
                        const std::string& in_value) const;
    unsigned long RemoveValue(const std::string& in_section, const std::string& in_key) const;
    /// Also when there is none.
    unsigned long RemoveSection(const std::string& in_section) const;

    /// Key and reason when it cannot be written to; empty when it can. Creates nothing that stays.
    std::string WhyNotWritable() const;

private:
    RegistryRoot(void* in_root, const char* in_rootName, const char* in_path)
        : m_root(in_root), m_rootName(in_rootName), m_path(in_path) {}

    void* m_root;
    const char* m_rootName;
    const char* m_path;
};

}  // namespace Veltrane::Cli

#endif
