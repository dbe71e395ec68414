/// The record of a change that is under way, in a file beside odbc.ini.
///
/// The setup library drops the keys that it does not know, and the tool puts them back right after.
/// If it is killed in between, only the record has them; the next run finds it and puts them back.
/// The file is locked while it is somebody's, so that runs of the tool change one DSN after the
/// other. One object a change; one thread.
#ifndef CLI_CHANGERECORD_H
#define CLI_CHANGERECORD_H

#include <string>

#include "Setup/SystemCalls.h"
#include "cli/DsnPlan.h"
#include "cli/DsnStore.h"

namespace Veltrane::Cli {

class ChangeRecord {
public:
    /// Waits for runs that are changing a DSN, and finishes what one that was killed has left.
    /// @param in_store  kept by reference
    /// @throws CommandError EXIT_FAILED with path and reason
    explicit ChangeRecord(const DsnStore& in_store);
    ChangeRecord(const ChangeRecord&) = delete;
    ChangeRecord& operator=(const ChangeRecord&) = delete;
    /// Removes the file.
    ~ChangeRecord();

    /// Makes sure that the keys survive the end of this process. Call it before the change.
    /// @param in_kept  what has to be put back once the setup library has saved
    void Write(const DsnPlan& in_plan, const Entries& in_kept);
    /// Leaves the file for the next run.
    void Leave() { m_isLeft = true; }

    /// What has been finished, a sentence; empty when nothing was left.
    const std::string& GetFinished() const { return m_finished; }

private:
    bool Open();
    void Finish(std::string in_bytes);
    [[noreturn]] void Fail(const std::string& in_operation, int in_error) const;

    const DsnStore& m_store;
    std::string m_path;
    ODBC::SystemCalls::FileHandle m_file;
    std::string m_finished;
    bool m_isLeft = false;
};

/// Finishes what a run that was killed has left undone in a file.
/// @return a sentence about it; empty when there was nothing
/// @throws CommandError as ChangeRecord does
std::string FinishInterruptedChange(const DsnStore& in_store);

/// The file that a killed run has left, for a finding; empty when there is none.
std::string FindInterruptedChange(const DsnStore& in_store);

}  // namespace Veltrane::Cli

#endif
