/// Carries out the plan for one DSN, so that the DSN ends up whole or untouched. One thread.
#ifndef CLI_DSNCHANGER_H
#define CLI_DSNCHANGER_H

#include "cli/dsn/DriverManager.h"
#include "cli/dsn/DsnPlan.h"
#include "cli/dsn/DsnStore.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

class ChangeRecord;

/// The DSN is not any more what the plan was made for. Nothing has been done.
class ChangedMeanwhile : public CommandError {
public:
    explicit ChangedMeanwhile(const std::string& in_dsn)
        : CommandError(EXIT_FAILED, "Another program has changed the DSN \"" + in_dsn +
                                        "\" at the same time. Nothing has been done; try again.") {}
};

class DsnChanger {
public:
    /// Both are kept by reference.
    DsnChanger(const DriverManager& in_manager, const DsnStore& in_store)
        : m_manager(in_manager), m_store(in_store) {}

    /// Adds, changes or removes the DSN through the installer, puts back the keys that the setup
    /// library drops, and reads the section again: an installer that says "done" has been known not
    /// to have done anything. A section that came out as neither the old nor the new one is
    /// restored; if this process is killed, the next run finishes what is missing (ChangeRecord).
    /// @throws ChangedMeanwhile; CommandError EXIT_FAILED with the installer's errors, and path and
    /// reason where the
    ///         file or the driver's library is what failed
    void Execute(const DsnPlan& in_plan) const;

private:
    std::string Change(const DsnPlan& in_plan, ChangeRecord& io_record) const;
    std::string Explain(const std::string& in_errors, const DsnPlan& in_plan) const;
    std::string Undo(const DsnPlan& in_plan, ChangeRecord& io_record) const;

    const DriverManager& m_manager;
    const DsnStore& m_store;
};

}  // namespace Veltrane::Cli

#endif
