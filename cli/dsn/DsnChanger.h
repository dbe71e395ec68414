/// Plans the changes of DSNs against one reading of their profile and carries them out in one
/// transaction. One thread.
#ifndef CLI_DSNCHANGER_H
#define CLI_DSNCHANGER_H

#include <functional>
#include <string>
#include <vector>

#include "cli/dsn/DsnPlan.h"
#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

/// What became of one DSN.
struct DsnResult {
    DsnPlan m_plan;
    std::string m_failure;  ///< why it is refused, and nothing of it done; empty: it is as planned
};

/// A result without a plan: the DSN stays as it is.
DsnResult MakeResult(const std::string& in_dsn, const std::string& in_failure = {});

using DsnResults = std::vector<DsnResult>;

/// Plans all changes of a run. It may be asked again, when the profile has changed meanwhile. What
/// it throws ends the run with nothing written.
using DsnPlanner = std::function<DsnResults(const ODBC::ProfileView&)>;

/// Adds a plan made from the wish and the view, or the reason why it is refused.
void AddPlan(const DsnWish& in_wish, const ODBC::ProfileView& in_view, DsnResults& io_results);

/// Looks at the results of each plan, and once more right before the writing, with the profile
/// locked. What it throws ends the run.
using DsnCheck = std::function<void(const DsnResults&, bool in_isLocked)>;

/// @return the results of the plan that was carried out, or of the first one in a dry run
/// @throws ODBC::ProfileError with path and reason where nothing could be written
DsnResults ChangeDsns(const DsnStore& in_store, const DsnPlanner& in_planner, bool in_isDryRun,
                      const DsnCheck& in_check = {});

}  // namespace Veltrane::Cli

#endif
