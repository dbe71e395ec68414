#include "cli/dsn/DsnStore.h"

#include <set>

namespace Veltrane::Cli {

const char* GetScopeName(Scope in_scope) { return in_scope == Scope::System ? "system" : "user"; }

std::vector<std::string> GetDsnNames(const ODBC::OdbcIniText& in_text) {
    std::vector<std::string> names;
    std::set<std::string> known;
    for (std::string& name : in_text.GetSections()) {
        if (name.empty() || ODBC::IsReservedName(name) || !known.insert(FoldCase(name)).second)
            continue;
        names.push_back(std::move(name));
    }
    return names;
}

}  // namespace Veltrane::Cli
