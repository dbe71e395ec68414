/// The terminal while newt uses it, for a form or a question. Only one at a time.
#ifndef VELTRANEDIALOG_EDITORS_TERMINALSCREEN_H
#define VELTRANEDIALOG_EDITORS_TERMINALSCREEN_H

#include <newt.h>

#include <string>

#include "PlatformAbstraction/base/FileDescriptor.h"

namespace Veltrane::ODBC {

constexpr int KEY_CONTROL_C = 3;

class TerminalScreen {
public:
    /// @throws EditorUnavailable
    TerminalScreen();
    TerminalScreen(const TerminalScreen&) = delete;
    TerminalScreen& operator=(const TerminalScreen&) = delete;
    /// Restores the terminal.
    ~TerminalScreen();

    /// Runs the form until a key, a descriptor or a component ends it.
    /// @throws std::runtime_error when a signal tells the editor to end
    void Run(newtComponent in_form, newtExitStruct& out_exit) const;
    [[noreturn]] static void FailWithoutTerminal();

    /// Readable after Wake, and after a signal that tells the editor to end.
    int GetWake() const { return m_wake.Get(); }
    void Wake() const;
    void Drain() const;

private:
    Orska::Support::FileDescriptor m_wake;
};

/// Returns the width of a text on the screen, in columns.
int ColumnsOf(const std::string& in_text);

/// False if the user has chosen colours.
bool UsesDefaultColors();

/// Asks for yes or no; no is preselected.
/// @param in_host  readable when the host has gone
/// @return true for yes
bool AskQuestion(const std::string& in_question, int in_host);

}  // namespace Veltrane::ODBC

#endif
