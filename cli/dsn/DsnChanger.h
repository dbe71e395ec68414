/// Plans the changes of DSNs from one reading of their profile, and carries them out in one
/// transaction. Used by one thread.
#ifndef CLI_DSNCHANGER_H
#define CLI_DSNCHANGER_H

#include <functional>
#include <string>
#include <vector>

#include "cli/dsn/DsnPlan.h"
#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

using DsnPlans = std::vector<DsnPlan>;

/// Plans all changes of a run. Called again if the profile has changed meanwhile. An exception ends
/// the run with nothing written.
using DsnPlanner = std::function<DsnPlans(const ODBC::ProfileView&)>;

/// Adds a plan made from the wish and the view, or the reason of a refusal.
void AddPlan(const DsnWish& in_wish, const ODBC::ProfileView& in_view, DsnPlans& io_plans);

/// Checks the plans when they are made, and once more right before the write, with the profile
/// locked. An exception ends the run.
using DsnCheck = std::function<void(const DsnPlans&, bool in_isLocked)>;

/// @return the plans that were carried out; in a dry run, the first ones
/// @throws ODBC::ProfileError with path and reason if nothing could be written
DsnPlans ChangeDsns(const DsnStore& in_store, const DsnPlanner& in_planner, bool in_isDryRun,
                    const DsnCheck& in_check = {});

}  // namespace Veltrane::Cli

#endif
