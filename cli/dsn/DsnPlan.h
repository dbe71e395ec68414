/// The planned change of one DSN, worked out from its section and the wanted values, before
/// anything is written. Nothing here reads or writes a profile.
#ifndef CLI_DSNPLAN_H
#define CLI_DSNPLAN_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

struct DsnWish {
    std::string m_name;
    std::string m_driver;  ///< its name in odbcinst.ini
    Entries m_values;      ///< an empty value removes the field's key
    std::vector<std::string> m_unset;
    bool m_isAbsent = false;    ///< the DSN is to be removed
    bool m_isReplaced = false;  ///< true: keys that are not given are removed
};

DsnWish RemovalOf(const std::string& in_dsn, const std::string& in_driver);

enum class Action { None, Add, Change, Remove };

/// A key that differs.
struct KeyChange {
    std::string m_key;
    std::optional<std::string> m_before;
    std::optional<std::string> m_after;
};

/// The change from one section to another. An empty value of a field equals an absent one.
std::vector<KeyChange> Compare(const Entries& in_before, const Entries& in_after);

struct DsnPlan {
    Action m_action = Action::None;
    std::string m_name;
    std::string m_driver;
    Entries m_before;  ///< the section as it is, "Driver" first; empty when there is none
    Entries m_after;   ///< as it will be; empty when it is removed
};

/// @param in_current  the DSN's section; nothing when there is none
/// @throws CommandError EXIT_FAILED when the DSN could not be stored so that it reads back whole,
///         and when it is one of another driver
DsnPlan MakePlan(const DsnWish& in_wish, const std::optional<Entries>& in_current);

/// The reason why a key cannot be given or removed; empty when it can.
std::string WhyNoKey(std::string_view in_key);

/// "-Server=old" and "+Server=new" for each difference; secret values masked. A secret that changes
/// shows as two equal masked lines.
std::vector<std::string> Difference(const DsnPlan& in_plan, bool in_areSecretsShown);

/// "added", "changed", "removed", "unchanged"; for a dry run "would be added" and so on.
std::string DescribeAction(Action in_action, bool in_isDryRun);

}  // namespace Veltrane::Cli

#endif
