#include "cli/dsn/DsnChanger.h"

#include <algorithm>
#include <map>

#include "cli/dsn/DriverRegistry.h"
#include "cli/system/CommandError.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

bool IsToDo(const DsnPlan& in_plan) {
    return in_plan.m_failure.empty() && in_plan.m_action != Action::None;
}

/// Returns why no DSN of a driver can be added; empty if one can.
std::string WhyNotAdded(const DriverRegistry& in_registry, const std::string& in_driver) {
    const std::optional<Entries> entries = in_registry.Find(in_driver);
    const std::string subject = "The driver " + Quote(in_driver) + " ";
    if (!entries) {
        return subject + "is not registered in " + in_registry.GetPath() +
               ". Install it, or give the name of a registered one with --driver.";
    }
    if (!PLATFORM_WORDS.m_needsDriverLibrary || !GetLibraryEntry(*entries, "Driver").empty()) {
        return {};
    }
    return subject + "has no Driver entry in " + in_registry.GetPath() +
           ", and without one the installer adds no DSN. Install the driver, or add the entry: "
           "veltrane-dsn driver register --replace --driver " +
           Quote(in_driver) + " --library " + PLATFORM_WORDS.m_exampleDriver + ".";
}

/// Refuses a new DSN of a driver that is not registered. A stored one can stay.
void RefuseUnknownDrivers(DsnPlans& io_plans) {
    const DriverRegistry registry;
    std::map<std::string, std::string> known;
    for (DsnPlan& plan : io_plans) {
        if (!IsToDo(plan) || plan.m_action != Action::Add) continue;
        const auto [entry, isNew] = known.try_emplace(plan.m_driver);
        if (isNew) entry->second = WhyNotAdded(registry, plan.m_driver);
        plan.m_failure = entry->second;
    }
}

/// Writes only the differences, so that all other keys stay. New values go first.
void CarryOut(const DsnPlan& in_plan, ODBC::ProfileChange& io_change) {
    const std::string& dsn = in_plan.m_name;
    if (in_plan.m_action == Action::Remove) return io_change.RemoveSection(dsn);
    if (in_plan.m_action == Action::Add) io_change.AddDataSource(dsn, in_plan.m_driver);
    for (const auto& [key, before, after, isRepeated] : in_plan.m_changes) {
        if (in_plan.m_action == Action::Add && key == "Driver") continue;
        // An old password must not stay in a repeated line that nobody reads.
        if (!after || isRepeated) io_change.RemoveKey(dsn, key);
        if (after) io_change.Set(dsn, key, *after);
    }
}

}  // namespace

void AddPlan(const DsnWish& in_wish, const ODBC::ProfileView& in_view, DsnPlans& io_plans) {
    try {
        if (!in_wish.m_failure.empty()) FailWith(in_wish.m_failure);
        io_plans.push_back(MakePlan(in_wish, ReadDsn(in_view, in_wish.m_name)));
    } catch (const std::exception& error) {
        io_plans.push_back({.m_name = in_wish.m_name, .m_failure = error.what()});
    }
}

DsnPlans ChangeDsns(const DsnStore& in_store, const DsnPlanner& in_planner, bool in_isDryRun,
                    const DsnCheck& in_check) {
    DsnPlans plans;
    const auto plan = [&](const ODBC::ProfileView& in_view) {
        plans = in_planner(in_view);
        RefuseUnknownDrivers(plans);
    };
    const auto check = [&](bool in_isLocked) {
        if (in_check) in_check(plans, in_isLocked);
    };
    // First without the lock: a run that changes nothing needs no right to write.
    const ODBC::ProfileView view = in_store.Read();
    plan(view);
    check(false);
    if (in_isDryRun || std::none_of(plans.begin(), plans.end(), IsToDo)) return plans;
    const auto write = [&](ODBC::ProfileChange& io_change) {
        if (!io_change.GetView().IsSame(view)) plan(io_change.GetView());
        check(true);
        for (const DsnPlan& each : plans) {
            if (IsToDo(each)) CarryOut(each, io_change);
        }
    };
    for (const auto& [dsn, reason] : in_store.Change(write)) {
        for (DsnPlan& each : plans) {
            if (each.m_name == dsn) each.m_failure = reason;
        }
    }
    return plans;
}

}  // namespace Veltrane::Cli
