#include "cli/dsn/DsnPlan.h"

#include <algorithm>

#include "Setup/OdbcIniLine.h"
#include "Setup/OdbcInstaller.h"
#include "VeltraneDialog/FieldRules.h"
#include "cli/dsn/DriverRegistry.h"
#include "cli/system/CommandError.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// The setup library has to accept new values, and they have to be read back unchanged. Stored
/// values can stay.
void CheckSection(const std::string& in_name, const Entries& in_before, const Entries& in_after) {
    const auto check = [&](const std::string& in_key, const std::string& in_value) {
        const std::string* const before = in_before.Find(in_key);
        const bool isStored = before != nullptr && !before->empty() && *before == in_value;
        const std::string reason = isStored ? std::string() : WhyNoValue(in_key, in_value);
        if (!reason.empty()) FailWith(reason);
    };
    check("DSN", in_name);
    if (!ODBC::OdbcInstaller::ValidDSN(Orska::Support::orska_wstring().SetFromUtf8(in_name))) {
        FailWith("DSN: The ODBC installer refuses this name.");
    }
    for (const auto& [key, value] : in_after) check(key, value);
}

/// Returns the new section; a new DSN has the order of the setup library.
Entries MakeSection(const DsnWish& in_wish, const Entries& in_current) {
    Entries merged = in_wish.m_isReplaced ? Entries() : in_current;
    for (const auto& [key, value] : in_wish.m_values) merged.Set(key, value);
    if (!in_wish.m_unset.empty()) merged.Remove(in_wish.m_unset);
    Entries section{{"Driver", in_wish.m_driver}};
    for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
        const std::string value = merged.Get(field.m_key);
        const bool isWritten = field.m_isRequired || !value.empty();
        if (field.m_key != "DSN" && isWritten) section.Set(field.m_key, value);
    }
    for (const auto& [key, value] : merged) {
        if (section.Find(key) == nullptr && FindField(key) == nullptr) section.Set(key, value);
    }
    return section;
}

/// The setup library of one driver must not change the DSNs of another.
void CheckOwner(const DsnWish& in_wish, const Entries& in_current) {
    const std::string owner = in_current.Get("Driver");
    if (owner.empty() || IsSameName(owner, in_wish.m_driver)) return;
    FailWith("The DSN " + Quote(in_wish.m_name) + " is one of the driver " + Quote(owner) +
             ", not of " + Quote(in_wish.m_driver) + ". If that is intended, give --driver.");
}

bool IsToDo(const DsnPlan& in_plan) {
    return in_plan.m_failure.empty() && in_plan.m_action != Action::None;
}

/// Refuses a new DSN of a driver that is not registered. A stored one can stay.
void CheckDriver(const DriverRegistry& in_registry, const std::string& in_driver) {
    const std::optional<Entries> entries = in_registry.Find(in_driver);
    const std::string subject = "The driver " + Quote(in_driver) + " ";
    if (!entries) {
        FailWith(subject + "is not registered in " + in_registry.GetPath() +
                 ". Install it, or give the name of a registered one with --driver.");
    }
    if (PLATFORM_WORDS.m_needsDriverLibrary && GetLibraryEntry(*entries, "Driver").empty()) {
        FailWith(subject + "has no Driver entry in " + in_registry.GetPath() +
                 ", and without one the installer adds no DSN. Install the driver, or add the "
                 "entry: veltrane-dsn driver register --replace --driver " +
                 Quote(in_driver) + " --library " + PLATFORM_WORDS.m_exampleDriver + ".");
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

std::vector<KeyChange> Compare(const Entries& in_before, const Entries& in_after) {
    std::vector<KeyChange> changes;
    const auto add = [&](const std::string& in_key, const std::string* in_old,
                         const std::string* in_new) {
        if (in_old == nullptr || in_new == nullptr) {
            const std::string& value = in_old == nullptr ? *in_new : *in_old;
            if (FindField(in_key) != nullptr && value.empty()) return;
        } else if (EqualsIgnoringCase(in_key, "Driver") ? EqualsIgnoringCase(*in_old, *in_new)
                                                        : *in_old == *in_new) {
            return;
        }
        KeyChange& change =
            changes.emplace_back(KeyChange{in_key, {}, {}, in_before.IsRepeated(in_key)});
        if (in_old != nullptr) change.m_before = *in_old;
        if (in_new != nullptr) change.m_after = *in_new;
    };
    for (const auto& [key, value] : in_before) add(key, &value, in_after.Find(key));
    for (const auto& [key, value] : in_after) {
        if (in_before.Find(key) == nullptr) add(key, nullptr, &value);
    }
    return changes;
}

std::string WhyNoValue(const std::string& in_key, const std::string& in_value) {
    for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
        const bool isField = EqualsIgnoringCase(field.m_key, in_key);
        const char* const reason = isField ? ODBC::WhyRefused(field, in_value) : nullptr;
        if (reason != nullptr) return in_key + ": " + reason;
    }
    if (ODBC::OdbcIniLine::IsCarriableLine(in_key, in_value)) return {};
    return in_key + ": No line of odbc.ini can hold this key and value unchanged.";
}

std::string WhyNoKey(std::string_view in_key) {
    if (EqualsIgnoringCase(in_key, "DSN")) return "the name of the DSN is the command's argument";
    if (EqualsIgnoringCase(in_key, "Driver")) return "the driver is given with --driver";
    return {};
}

DsnPlan MakePlan(const DsnWish& in_wish, const std::optional<Entries>& in_current) {
    if (in_current) CheckOwner(in_wish, *in_current);
    const Entries before = in_current.value_or(Entries());
    DsnPlan plan{.m_name = in_wish.m_name, .m_driver = in_wish.m_driver};
    if (in_wish.m_isAbsent) {
        plan.m_action = in_current ? Action::Remove : Action::None;
        plan.m_changes = Compare(before, {});
        return plan;
    }
    const Entries after = MakeSection(in_wish, before);
    CheckSection(in_wish.m_name, before, after);
    plan.m_changes = Compare(before, after);
    const Action change = plan.m_changes.empty() ? Action::None : Action::Change;
    plan.m_action = in_current ? change : Action::Add;
    return plan;
}

std::vector<std::string> Difference(const DsnPlan& in_plan, bool in_areSecretsShown) {
    std::vector<std::string> lines;
    if (in_plan.m_action == Action::None) return lines;
    if (in_plan.m_action != Action::Change) {
        lines.push_back((in_plan.m_action == Action::Add ? "+[" : "-[") + in_plan.m_name + "]");
    }
    const auto add = [&](char in_sign, const std::string& in_key, const auto& in_value) {
        if (!in_value) return;
        lines.push_back(in_sign + in_key + "=" +
                        ShownValue({in_key, *in_value}, in_areSecretsShown));
    };
    for (const auto& [key, before, after, isRepeated] : in_plan.m_changes) {
        add('-', key, before);
        add('+', key, after);
    }
    return lines;
}

std::string DescribeAction(Action in_action, bool in_isDryRun) {
    constexpr const char* NAMES[] = {"unchanged", "added", "changed", "removed"};
    const bool isWished = in_isDryRun && in_action != Action::None;
    return std::string(isWished ? "would be " : "") + NAMES[static_cast<std::size_t>(in_action)];
}

DsnPlan PlanChange(const DsnWish& in_wish, const PlanBasis& in_basis) {
    DsnPlan plan = MakePlan(in_wish, ReadDsn(in_basis.m_view, in_wish.m_name));
    if (plan.m_action == Action::Add) CheckDriver(in_basis.m_registry, plan.m_driver);
    return plan;
}

DsnPlans ChangeDsns(const DsnStore& in_store, const DsnPlanner& in_planner, bool in_isDryRun,
                    const std::function<void()>& in_beforeWrite) {
    const DriverRegistry registry;
    // First without the lock: a run that changes nothing needs no right to write.
    const ODBC::ProfileView view = in_store.Read();
    DsnPlans plans = in_planner({view, registry});
    if (in_isDryRun || std::ranges::none_of(plans, IsToDo)) return plans;
    const auto write = [&](ODBC::ProfileChange& io_change) {
        if (!io_change.GetView().IsSame(view)) plans = in_planner({io_change.GetView(), registry});
        in_beforeWrite();
        for (const DsnPlan& plan : plans) {
            if (IsToDo(plan)) CarryOut(plan, io_change);
        }
    };
    for (const auto& [dsn, reason] : in_store.Change(write)) {
        for (DsnPlan& plan : plans) {
            if (plan.m_name == dsn) plan.m_failure = reason;
        }
    }
    return plans;
}

}  // namespace Veltrane::Cli
