#include "cli/dsn/ChangeLock_Windows.h"

#include <windows.h>

#include "VeltraneDialog/WideText_Windows.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

constexpr DWORD LOCK_TIMEOUT = 10'000;  // milliseconds

/// The lock is one of all sessions for the system's DSNs.
const wchar_t* NameFor(Scope in_scope) {
    return in_scope == Scope::System ? L"Global\\veltrane-dsn-change"
                                     : L"Local\\veltrane-dsn-change";
}

[[noreturn]] void Fail(const std::string& in_place, const char* in_operation, DWORD in_error) {
    throw CommandError(EXIT_FAILED,
                       in_place + ": " + in_operation + ": " + ODBC::DescribeSystemError(in_error));
}

}  // namespace

ChangeLock::ChangeLock(Scope in_scope, const std::string& in_place)
    : m_mutex(CreateMutexW(nullptr, FALSE, NameFor(in_scope))) {
    if (m_mutex == nullptr) Fail(in_place, "cannot lock", GetLastError());
    const DWORD result = WaitForSingleObject(m_mutex, LOCK_TIMEOUT);
    // One that was abandoned is of a run that was killed.
    if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) return;
    CloseHandle(m_mutex);
    Fail(in_place, "in use by another run", WAIT_TIMEOUT);
}

ChangeLock::~ChangeLock() {
    ReleaseMutex(m_mutex);
    CloseHandle(m_mutex);
}

bool ChangeLock::IsUsed(Scope in_scope) {
    // The mutex is there as long as a run is that has it.
    const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, NameFor(in_scope));
    if (mutex != nullptr) CloseHandle(mutex);
    return mutex != nullptr;
}

}  // namespace Veltrane::Cli
