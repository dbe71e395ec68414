#include <set>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"

namespace Veltrane::Cli {

namespace {

/// Makes the plan of one command and carries it out. The first error ends it.
ExitCode Change(const CommandLine& in_line, const DsnPlanner& in_planner) {
    const DsnStore store(GetScope(in_line));
    Report report(in_line, store);
    for (const DsnPlan& result : ChangeDsns(store, in_planner, in_line.Has("--dry-run"))) {
        if (!result.m_failure.empty()) FailWith(result.m_failure);
        report.Add(result);
    }
    return report.Finish();
}

}  // namespace

ExitCode AddDsn(const CommandLine& in_line) {
    if (in_line.Has("--if-missing") && in_line.Has("--replace")) {
        Refuse("--if-missing and --replace exclude each other.");
    }
    DsnWish wish = MakeWish(in_line);
    wish.m_isReplaced = in_line.Has("--replace");
    return Change(in_line, [&](const PlanBasis& in_basis) -> DsnPlans {
        const std::optional<Entries> current = ReadDsn(in_basis.m_view, wish.m_name);
        if (current && in_line.Has("--if-missing")) return {{.m_name = wish.m_name}};
        if (current && !wish.m_isReplaced) {
            throw DsnExists(DsnStore(GetScope(in_line)), wish.m_name);
        }
        return {PlanChange(wish, in_basis)};
    });
}

ExitCode SetDsn(const CommandLine& in_line) {
    const std::string& dsn = in_line.m_arguments.front();
    const DsnStore store(GetScope(in_line));
    // Check this before asking the user for a password.
    if (!ReadDsn(store.Read(), dsn)) throw NoSuchDsn(store, dsn);
    const DsnWish wish = MakeWish(in_line);
    return Change(in_line, [&](const PlanBasis& in_basis) -> DsnPlans {
        if (!ReadDsn(in_basis.m_view, dsn)) throw NoSuchDsn(store, dsn);
        return {PlanChange(wish, in_basis)};
    });
}

ExitCode RemoveDsns(const CommandLine& in_line) {
    return Change(in_line, [&](const PlanBasis& in_basis) {
        DsnPlans plans;
        std::set<std::string> known;
        for (const std::string& dsn : in_line.m_arguments) {
            if (!known.insert(FoldName(dsn)).second) continue;
            if (!in_line.Has("--if-exists") && !ReadDsn(in_basis.m_view, dsn)) {
                throw NoSuchDsn(DsnStore(GetScope(in_line)), dsn);
            }
            const DsnWish wish{.m_name = dsn, .m_driver = GetDriver(in_line), .m_isAbsent = true};
            plans.push_back(PlanChange(wish, in_basis));
        }
        return plans;
    });
}

}  // namespace Veltrane::Cli
