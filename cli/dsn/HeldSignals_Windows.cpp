#include <windows.h>

#include <atomic>

#include "cli/dsn/HeldSignals.h"

namespace Veltrane::Cli {

namespace {

/// Process-wide: set by the handler, read by ~HeldSignals: the program is to end.
std::atomic<bool> s_isEndWanted = false;
/// Process-wide: set and read by HeldSignals and the handler.
std::atomic<bool> s_isHeld = false;

/// Runs in a thread of the system's own.
BOOL WINAPI HandleControl(DWORD in_event) {
    s_isEndWanted = true;
    // After a closed console or at a log-off the process ends when this returns.
    const bool isLastWord = in_event != CTRL_C_EVENT && in_event != CTRL_BREAK_EVENT;
    while (isLastWord && s_isHeld) Sleep(10);
    return TRUE;
}

}  // namespace

struct HeldSignals::State {};

HeldSignals::HeldSignals() {
    s_isHeld = true;
    SetConsoleCtrlHandler(HandleControl, TRUE);
}

HeldSignals::~HeldSignals() {
    SetConsoleCtrlHandler(HandleControl, FALSE);
    s_isHeld = false;
    if (s_isEndWanted) ExitProcess(static_cast<UINT>(STATUS_CONTROL_C_EXIT));
}

}  // namespace Veltrane::Cli
