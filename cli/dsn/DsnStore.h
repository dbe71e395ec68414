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

/// The DSNs that a command works on.
enum class Scope { User, System };

const char* GetScopeName(Scope in_scope);

/// Who can read and write the file of a scope.
struct FileRights {
    bool m_isReadByOthers = false;     ///< by anybody except its owner and its group
    bool m_isReadByGroup = false;      ///< by its group, or by others in its access list
    bool m_isWrittenByOthers = false;  ///< by anybody except its owner
    std::string m_mode;                ///< octal, "0644"
};

/// True for the administrator, who can change the system's files.
bool IsAdministrator();

class DsnStore : public ODBC::Profile {
public:
    /// Uses the file or key that the driver manager uses for the scope.
    explicit DsnStore(Scope in_scope);

    Scope GetScope() const { return m_scope; }

    /// As Profile::WhyNotWritable, also for the folder of the file.
    std::string WhyNotWritable() const;

    FileRights GetRights() const;

    /// Returns where an older, killed version of the tool has left the keys of a half-done change;
    /// empty if there are none.
    std::string FindLeftRecord() const;

    /// Returns the paths of temporary files of killed changes. None on Windows.
    std::vector<std::string> FindLeftFiles() const;

private:
    Scope m_scope;
};

/// Returns the section of a DSN; nothing if there is none or the name is reserved.
std::optional<Entries> ReadDsn(const ODBC::ProfileView& in_view, const std::string& in_dsn);

/// Returns the sections that are DSNs, each once.
std::vector<std::string> GetDsnNames(const ODBC::ProfileView& in_view);

}  // namespace Veltrane::Cli

#endif
