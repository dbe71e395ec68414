#include "cli/dsn/DsnStore.h"

#include <unordered_set>

namespace Veltrane::Cli {

using ODBC::ProfileView;

const char* GetScopeName(Scope in_scope) { return in_scope == Scope::System ? "system" : "user"; }

DsnStore::DsnStore(Scope in_scope)
    : Profile(in_scope == Scope::System ? Kind::SYSTEM_DATA_SOURCES : Kind::USER_DATA_SOURCES),
      m_scope(in_scope) {}

std::optional<Entries> ReadDsn(const ProfileView& in_view, const std::string& in_dsn) {
    if (ODBC::IsReservedName(in_dsn) || !in_view.HasSection(in_dsn)) return std::nullopt;
    return Entries(in_view.GetKeyValues(in_dsn));
}

std::vector<std::string> GetDsnNames(const ProfileView& in_view) {
    std::vector<std::string> names;
    std::unordered_set<std::string> known;
    for (std::string& name : in_view.GetSections()) {
        const bool isDsn = !name.empty() && !ODBC::IsReservedName(name);
        if (isDsn && known.insert(FoldName(name)).second) names.push_back(std::move(name));
    }
    return names;
}

}  // namespace Veltrane::Cli
