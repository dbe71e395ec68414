/// The DSNs of one scope, as the tool reads them (Setup/Profile.h). Used by one thread.
#ifndef CLI_DSNSTORE_H
#define CLI_DSNSTORE_H

#include <optional>
#include <string>
#include <vector>

#include "Setup/Profile.h"
#include "VeltraneDialog/FieldRules.h"
#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

/// Which DSNs a command works on.
enum class Scope { User, System };

const char* GetScopeName(Scope in_scope);

class DsnStore {
public:
    /// The file or key that the driver manager uses for the scope.
    explicit DsnStore(Scope in_scope);

    Scope GetScope() const { return m_scope; }
    const std::string& GetPath() const { return m_profile.GetPath(); }
    const ODBC::Profile& GetProfile() const { return m_profile; }

    /// What is there now; empty when there is nothing.
    /// @throws ODBC::ProfileError with path and reason
    ODBC::ProfileView Load() const { return m_profile.Read(); }

    /// The section of a DSN; nothing when there is none or the name is reserved.
    /// @throws ODBC::ProfileError as Load
    std::optional<Entries> Read(const std::string& in_dsn) const;

    /// Path and reason when a change could not be written now; empty when it could. Leaves nothing
    /// behind.
    std::string WhyNotWritable() const;

    /// Where an older version of the tool that was killed has left the keys of a half-done change;
    /// empty when it has not.
    std::string FindLeftRecord() const;

    /// The paths of temporary files of a killed change, which no living process owns. None on
    /// Windows.
    std::vector<std::string> FindLeftFiles() const;

private:
    Scope m_scope;
    ODBC::Profile m_profile;
};

/// The section of a DSN; nothing when there is none or the name is reserved.
std::optional<Entries> ReadDsn(const ODBC::ProfileView& in_view, const std::string& in_dsn);

/// The sections that are DSNs, each once.
std::vector<std::string> GetDsnNames(const ODBC::ProfileView& in_view);

}  // namespace Veltrane::Cli

#endif
