/// Where the record of a change stands (ChangeRecord): on Linux a file beside odbc.ini, on Windows
/// a value in the registry. Locked while it is somebody's.
#ifndef CLI_RECORDFILE_H
#define CLI_RECORDFILE_H

#include <memory>
#include <string>

#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

class RecordFile {
public:
    /// Waits for other runs that have it, and takes it.
    /// @throws CommandError EXIT_FAILED with path and reason
    explicit RecordFile(const DsnStore& in_store);
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;
    /// Removes it.
    ~RecordFile();

    /// What a run that was killed has left; empty when there is nothing.
    /// @throws CommandError as above
    std::string Read() const;
    void Clear();
    /// @param in_isLasting  whether it has to outlive a loss of power
    /// @throws CommandError as above
    void Write(const std::string& in_text, bool in_isLasting);
    /// Leaves it for the next run.
    void Leave();

    static bool Exists(const DsnStore& in_store);
    /// Where one is that nobody has any more; empty when there is none.
    static std::string FindLeft(const DsnStore& in_store);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace Veltrane::Cli

#endif
