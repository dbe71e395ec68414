/// The odbc.ini of one scope, read and mended by the setup library's own code: the installer's
/// reads create the file, keep old values for 20 s and cost a parse for each key, and its writes
/// are neither locked nor atomic. DSNs themselves are added, changed and removed through the
/// installer (DriverManager), not here. Used by one thread.
///
/// On Windows it is a key of the registry, and its text here is that of a file with the same
/// sections. The registry has no lock and changes value by value.
#ifndef CLI_DSNSTORE_H
#define CLI_DSNSTORE_H

#include <optional>
#include <string>
#include <vector>

#include "Setup/OdbcIniText.h"
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
    const std::string& GetPath() const { return m_path; }

    /// The file as it is now; empty when there is none.
    /// @throws CommandError EXIT_FAILED with path and reason
    ODBC::OdbcIniText Load() const;

    /// The section of a DSN; nothing when there is none or the name is reserved.
    /// @throws CommandError as Load; on Windows also for a value that could not be written back
    std::optional<Entries> Read(const std::string& in_dsn) const;

    /// As Read, but not while another run changes the DSN, where that could be seen half done.
    std::optional<Entries> ReadSettled(const std::string& in_dsn) const;

    /// Adds keys to a section, in one locked, atomic write.
    /// @return false when the file could not be written
    bool PutBack(const std::string& in_dsn, const Entries& in_entries) const;

    /// Makes the section what it was, in one locked, atomic write; removes it when there was none.
    bool Restore(const std::string& in_dsn, const Entries& in_entries) const;

    /// Path and reason when the file cannot be locked and written now; empty when it can. Leaves no
    /// new file behind.
    std::string WhyNotWritable() const;

private:
    Scope m_scope;
    std::string m_path;
};

/// The sections of a file that are DSNs, each once.
std::vector<std::string> GetDsnNames(const ODBC::OdbcIniText& in_text);

}  // namespace Veltrane::Cli

#endif
