#include <cerrno>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/OdbcIniUpdate.h"
#include "cli/dsn/DsnStore.h"
#include "cli/system/CommandError.h"
#include "cli/system/FreeSpace.h"

namespace Veltrane::Cli {

namespace {

/// As the setup library creates files: the user's are private, the system's are for everybody.
mode_t NewFileMode(Scope in_scope) { return in_scope == Scope::System ? 0644 : 0600; }

bool Write(ODBC::OdbcIniUpdate& io_update, const std::string& in_dsn, const Entries& in_entries) {
    for (const auto& [key, value] : in_entries) {
        if (!io_update.Set(in_dsn, key, value)) return false;
    }
    for (const auto& [key, value] : in_entries.GetRepeated()) {
        if (!io_update.Add(in_dsn, key, value)) return false;
    }
    return true;
}

}  // namespace

DsnStore::DsnStore(Scope in_scope)
    : m_scope(in_scope),
      m_path(in_scope == Scope::System ? ODBC::GetSystemIniPath() : ODBC::GetUserIniPath()) {}

ODBC::OdbcIniText DsnStore::Load() const {
    ODBC::OdbcIniFile file(m_path);
    std::string bytes;
    struct stat status {};
    if (!file.Read(bytes, status)) {
        if (file.GetFailure().m_error == ENOENT) return {};
        throw CommandError(EXIT_FAILED, file.GetFailure().Describe());
    }
    ODBC::OdbcIniText text(std::move(bytes));
    if (!text.IsReadable()) {
        throw CommandError(EXIT_FAILED, m_path +
                                            ": text before the first section makes the whole "
                                            "file unreadable for the driver manager");
    }
    return text;
}

std::optional<Entries> DsnStore::Read(const std::string& in_dsn) const {
    const ODBC::OdbcIniText text = Load();
    if (ODBC::IsReservedName(in_dsn) || !text.HasSection(in_dsn)) return std::nullopt;
    return Entries(text.GetKeyValues(in_dsn));
}

/// The file is replaced as a whole.
std::optional<Entries> DsnStore::ReadSettled(const std::string& in_dsn) const {
    return Read(in_dsn);
}

bool DsnStore::PutBack(const std::string& in_dsn, const Entries& in_entries) const {
    ODBC::OdbcIniUpdate update(m_path, NewFileMode(m_scope));
    // Gone meanwhile: nothing to put a key into.
    if (!update.IsOpen() || !update.GetText().HasSection(in_dsn)) return false;
    return Write(update, in_dsn, in_entries) && update.Commit();
}

bool DsnStore::Restore(const std::string& in_dsn, const Entries& in_entries) const {
    ODBC::OdbcIniUpdate update(m_path, NewFileMode(m_scope));
    if (in_entries.IsEmpty()) return update.RemoveSection(in_dsn) && update.Commit();
    return update.StartSection(in_dsn) && Write(update, in_dsn, in_entries) && update.Commit();
}

std::string DsnStore::WhyNotWritable() const {
    ODBC::OdbcIniFile file(m_path);
    std::string bytes;
    if (!file.Lock(bytes, NewFileMode(m_scope))) return file.GetFailure().Describe();
    if (!ODBC::OdbcIniText(std::move(bytes)).IsReadable()) {
        return m_path +
               ": text before the first section makes the whole file unreadable for the "
               "driver manager";
    }
    return WhyNoRoomBeside(m_path);
}

}  // namespace Veltrane::Cli
