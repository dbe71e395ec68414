/// The lock that a run holds while it changes a DSN in the registry, which has none of its own. One
/// for the DSNs of a user in a session, one for those of the system. A thread may hold it twice.
#ifndef CLI_CHANGELOCK_WINDOWS_H
#define CLI_CHANGELOCK_WINDOWS_H

#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

class ChangeLock {
public:
    /// Waits for other runs that hold it. One that was killed holds it no more.
    /// @param in_place  what is locked, for error texts
    /// @throws CommandError EXIT_FAILED with the place and the reason
    ChangeLock(Scope in_scope, const std::string& in_place);
    ChangeLock(const ChangeLock&) = delete;
    ChangeLock& operator=(const ChangeLock&) = delete;
    ~ChangeLock();

    /// Whether a run holds it, or is about to.
    static bool IsUsed(Scope in_scope);

private:
    void* m_mutex;
};

}  // namespace Veltrane::Cli

#endif
