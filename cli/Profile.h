/// The sections of one odbc.ini as the driver manager reads them, read at once: the driver
/// manager's own reads parse the file for each key and answer from a cache of 20 s.
#ifndef CLI_PROFILE_H
#define CLI_PROFILE_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/Scope.h"
#include "cli/Values.h"

namespace Veltrane::Cli {

class Profile {
public:
    /// @throws InstallerError with path and reason when the file cannot be read. A file that does
    ///         not exist is empty, unless its folder does not exist either.
    explicit Profile(Scope in_scope);
    /// Sections of a text in the form of an odbc.ini.
    /// @throws CommandError (usage) when the driver manager would not read it
    explicit Profile(const std::string& in_text);

    /// The names of the DSNs, in file order.
    const std::vector<std::string>& Names() const { return m_names; }
    /// Nothing when there is no such DSN. Names compare without regard to ASCII case.
    const Values* Find(const std::string& in_name) const;

private:
    void Parse(const std::string& in_text);

    std::vector<std::string> m_names;
    std::map<std::string, Values> m_sections;  ///< by name in lower case
};

}  // namespace Veltrane::Cli

#endif
