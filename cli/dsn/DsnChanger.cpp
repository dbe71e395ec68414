#include "cli/dsn/DsnChanger.h"

#include <algorithm>
#include <map>

#include "cli/dsn/DriverRegistry.h"
#include "cli/system/CommandError.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

bool IsToDo(const DsnResult& in_result) {
    return in_result.m_failure.empty() && in_result.m_plan.m_action != Action::None;
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
void RefuseUnknownDrivers(DsnResults& io_results) {
    const DriverRegistry registry;
    std::map<std::string, std::string> known;
    for (DsnResult& result : io_results) {
        if (!IsToDo(result) || result.m_plan.m_action != Action::Add) continue;
        const std::string& driver = result.m_plan.m_driver;
        const auto [entry, isNew] = known.try_emplace(driver);
        if (isNew) entry->second = WhyNotAdded(registry, driver);
        result.m_failure = entry->second;
    }
}

/// Writes only the differences, so that all other keys stay. New values go first.
void CarryOut(const DsnPlan& in_plan, ODBC::ProfileChange& io_change) {
    const std::string& dsn = in_plan.m_name;
    if (in_plan.m_action == Action::Remove) return io_change.RemoveSection(dsn);
    if (in_plan.m_action == Action::Add) io_change.AddDataSource(dsn, in_plan.m_driver);
    for (const auto& [key, before, after] : Compare(in_plan.m_before, in_plan.m_after)) {
        if (in_plan.m_action == Action::Add && key == "Driver") continue;
        // An old password must not stay in a repeated line that nobody reads.
        if (!after || in_plan.m_before.IsRepeated(key)) io_change.RemoveKey(dsn, key);
        if (after) io_change.Set(dsn, key, *after);
    }
}

}  // namespace

void AddPlan(const DsnWish& in_wish, const ODBC::ProfileView& in_view, DsnResults& io_results) {
    try {
        if (!in_wish.m_failure.empty()) FailWith(in_wish.m_failure);
        io_results.push_back({MakePlan(in_wish, ReadDsn(in_view, in_wish.m_name)), {}});
    } catch (const std::exception& error) {
        io_results.push_back({{.m_name = in_wish.m_name}, error.what()});
    }
}

DsnResults ChangeDsns(const DsnStore& in_store, const DsnPlanner& in_planner, bool in_isDryRun,
                      const DsnCheck& in_check) {
    DsnResults results;
    const auto plan = [&](const ODBC::ProfileView& in_view) {
        results = in_planner(in_view);
        RefuseUnknownDrivers(results);
    };
    const auto check = [&](bool in_isLocked) {
        if (in_check) in_check(results, in_isLocked);
    };
    // First without the lock: a run that changes nothing needs no right to write.
    const ODBC::ProfileView view = in_store.Load();
    plan(view);
    check(false);
    if (in_isDryRun || std::none_of(results.begin(), results.end(), IsToDo)) return results;
    const auto write = [&](ODBC::ProfileChange& io_change) {
        if (!io_change.GetView().IsSame(view)) plan(io_change.GetView());
        check(true);
        for (const DsnResult& result : results) {
            if (IsToDo(result)) CarryOut(result.m_plan, io_change);
        }
    };
    for (const auto& [dsn, reason] : in_store.GetProfile().Change(write)) {
        for (DsnResult& result : results) {
            if (result.m_plan.m_name == dsn) result.m_failure = reason;
        }
    }
    return results;
}

}  // namespace Veltrane::Cli
