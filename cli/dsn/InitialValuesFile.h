/// The file through which a request without a window gets its values. It lives in memory, is seen
/// by this process only and is gone with the object, so a password in it never reaches the disk. On
/// Windows it is a pipe that answers this process alone.
#ifndef CLI_INITIALVALUESFILE_H
#define CLI_INITIALVALUESFILE_H

#include <memory>

#include "cli/dsn/Entries.h"

namespace Veltrane::Cli {

class InitialValuesFile {
public:
    /// Writes the file and names it in VELTRANE_DSN_INITIAL_VALUES.
    /// @param in_values  each as one line can carry it: MakePlan has seen to that
    explicit InitialValuesFile(const Entries& in_values);
    InitialValuesFile(const InitialValuesFile&) = delete;
    InitialValuesFile& operator=(const InitialValuesFile&) = delete;
    ~InitialValuesFile();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace Veltrane::Cli

#endif
