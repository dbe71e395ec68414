/// The test of a connection in the terminal editor.
#ifndef VELTRANEDIALOG_EDITORS_TERMINALTEST_H
#define VELTRANEDIALOG_EDITORS_TERMINALTEST_H

#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/editors/TerminalScreen.h"

namespace Veltrane::ODBC {

/// Connects with the values and shows the result in a window over the form. The user can stop it.
/// @param in_host  readable when the host has gone, which ends the test
void TestInTerminal(const DialogValues& in_values, const TerminalScreen& in_screen, int in_host);

}  // namespace Veltrane::ODBC

#endif
