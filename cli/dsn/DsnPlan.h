/// The changes of DSNs. A plan is made from the section of a DSN and the wanted values; nothing is
/// read or written for it. ChangeDsns plans all changes from one reading of their profile, and
/// carries them out in one transaction. Used by one thread.
#ifndef CLI_DSNPLAN_H
#define CLI_DSNPLAN_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/dsn/DsnStore.h"
#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

struct DsnWish {
    std::string m_name;
    std::string m_driver;   ///< its name in odbcinst.ini
    Entries m_values = {};  ///< an empty value removes the field's key
    std::vector<std::string> m_unset = {};
    bool m_isAbsent = false;     ///< the DSN is to be removed
    bool m_isReplaced = false;   ///< true: keys that are not given are removed
    std::string m_failure = {};  ///< why it cannot be carried out; empty: no reason known
};

enum class Action { None, Add, Change, Remove };

/// A key that differs.
struct KeyChange {
    std::string m_key;
    std::optional<std::string> m_before;
    std::optional<std::string> m_after;
    bool m_isRepeated;  ///< the section has more lines with the key, which no program reads
};

/// Returns the change from one section to another. An empty value of a field equals a missing one.
std::vector<KeyChange> Compare(const Entries& in_before, const Entries& in_after);

/// The plan for one DSN, and its result once it is carried out.
struct DsnPlan {
    std::string m_name;
    std::string m_driver = {};
    Action m_action = Action::None;
    std::vector<KeyChange> m_changes = {};  ///< "Driver" first in a new section
    std::string m_failure = {};  ///< why it was refused, with nothing done; empty on success
};

/// @param in_current  the DSN's section; nothing if there is none
/// @throws CommandError EXIT_FAILED if the DSN would not be read back unchanged, or belongs to
///         another driver
DsnPlan MakePlan(const DsnWish& in_wish, const std::optional<Entries>& in_current);

/// Returns why a value cannot be stored, after its key, which can be "DSN" for the name; empty if
/// it can.
std::string WhyNoValue(const std::string& in_key, const std::string& in_value);

/// Returns why a key cannot be set or removed; empty if it can.
std::string WhyNoKey(std::string_view in_key);

/// Returns "-Server=old" and "+Server=new" for each difference, with secrets masked. A changed
/// secret shows as two equal masked lines.
std::vector<std::string> Difference(const DsnPlan& in_plan, bool in_areSecretsShown);

/// Returns "added", "changed", "removed" or "unchanged"; in a dry run "would be added" and so on.
std::string DescribeAction(Action in_action, bool in_isDryRun);

class DriverRegistry;

/// What plans are made from.
struct PlanBasis {
    const ODBC::ProfileView& m_view;
    const DriverRegistry& m_registry;
};

/// As MakePlan, for the DSN in the view. The driver of a new DSN has to be registered.
DsnPlan PlanChange(const DsnWish& in_wish, const PlanBasis& in_basis);

using DsnPlans = std::vector<DsnPlan>;

/// Plans all changes of a run. Called again if the profile has changed meanwhile. An exception ends
/// the run with nothing written.
using DsnPlanner = std::function<DsnPlans(const PlanBasis&)>;

/// @param in_beforeWrite  is called with the profile locked
/// @return the plans that were carried out; in a dry run, the first ones
/// @throws ODBC::ProfileError with path and reason if nothing could be written
DsnPlans ChangeDsns(
    const DsnStore& in_store, const DsnPlanner& in_planner, bool in_isDryRun,
    const std::function<void()>& in_beforeWrite = [] {});

}  // namespace Veltrane::Cli

#endif
