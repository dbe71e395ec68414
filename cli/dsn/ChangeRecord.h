/// The record of a change that is under way, in a file beside odbc.ini (RecordFile).
///
/// The setup library drops the keys that it does not know, and the tool puts them back right after.
/// If it is killed in between, only the record has them; the next run finds it and puts them back.
/// The file is locked while it is somebody's, so that runs of the tool change one DSN after the
/// other. One object a change; one thread.
#ifndef CLI_CHANGERECORD_H
#define CLI_CHANGERECORD_H

#include <string>

#include "cli/dsn/DsnPlan.h"
#include "cli/dsn/DsnStore.h"
#include "cli/dsn/RecordFile.h"

namespace Veltrane::Cli {

class ChangeRecord {
public:
    /// Waits for runs that are changing a DSN, and finishes what one that was killed has left.
    /// @param in_store  kept by reference
    /// @throws CommandError EXIT_FAILED with path and reason
    explicit ChangeRecord(const DsnStore& in_store);
    ChangeRecord(const ChangeRecord&) = delete;
    ChangeRecord& operator=(const ChangeRecord&) = delete;
    /// Makes sure that the keys survive the end of this process. Call it before the change.
    /// @param in_kept  what has to be put back once the setup library has saved
    void Write(const DsnPlan& in_plan, const Entries& in_kept);
    /// Leaves the file for the next run.
    void Leave() { m_file.Leave(); }

    /// What has been finished, a sentence; empty when nothing was left.
    const std::string& GetFinished() const { return m_finished; }

private:
    void Finish(std::string in_bytes);

    const DsnStore& m_store;
    RecordFile m_file;
    std::string m_finished;
};

/// Finishes what a run that was killed has left undone in a file.
/// @return a sentence about it; empty when there was nothing
/// @throws CommandError as ChangeRecord does
std::string FinishInterruptedChange(const DsnStore& in_store);

/// The file that a killed run has left, for a finding; empty when there is none.
std::string FindInterruptedChange(const DsnStore& in_store);

}  // namespace Veltrane::Cli

#endif
