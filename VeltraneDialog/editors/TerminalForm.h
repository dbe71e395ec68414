/// The DSN editor as a text form in a terminal, drawn by newt. Only one at a time.
#ifndef VELTRANEDIALOG_EDITORS_TERMINALFORM_H
#define VELTRANEDIALOG_EDITORS_TERMINALFORM_H

#include <newt.h>

#include <array>
#include <string>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/editors/TerminalScreen.h"

namespace Veltrane::ODBC {

class TerminalForm {
public:
    /// Draws the form on standard output.
    /// @param io_values  changed by `Run` when the user presses OK
    /// @param in_host  readable when the host has gone
    /// @throws EditorUnavailable when the terminal is too small or of an unknown type
    TerminalForm(DialogValues& io_values, int in_host);
    TerminalForm(const TerminalForm&) = delete;
    TerminalForm& operator=(const TerminalForm&) = delete;

    ~TerminalForm();

    /// @return true for OK
    bool Run();

private:
    struct Row {
        const DialogField* m_field = nullptr;
        newtComponent m_entry = nullptr;
        newtComponent m_reason = nullptr;
    };

    void Start();
    int BuildRow(Row& out_row, const DialogField& in_field, int in_top);
    void BuildButtons(int in_top);
    int LabelWidth() const;

    static int OnKey(newtComponent in_entry, void* in_form, int in_key, int in_cursor);
    static void OnChange(newtComponent in_component, void* in_form);
    std::string Indented(const std::string& in_reason) const;

    /// Updates the reasons, the password and the help line after a key.
    void Follow();
    bool HandleExit(const newtExitStruct& in_exit, bool& out_accepted);
    void ChooseLoginMode();
    bool Accept();
    DialogValues Collect() const;
    void Test();

    /// Wakes the form when `Follow` has to run.
    TerminalScreen m_screen;
    DialogValues& m_values;
    int m_host;
    int m_width = 0;
    int m_entryLeft = 0;
    std::array<Row, DIALOG_FIELDS.size()> m_rows;
    /// Empty fields are reported only after OK was tried.
    bool m_showsMissing = false;
    newtComponent m_form = nullptr;
    /// The entry with the focus, from the start of a run until its first callback.
    newtComponent m_startedIn = nullptr;
    newtComponent m_showPassword = nullptr;
    newtComponent m_chooseLoginMode = nullptr;
    newtComponent m_ok = nullptr;
    /// Null if nothing can be tested.
    newtComponent m_test = nullptr;
    newtComponent m_cancel = nullptr;
};

}  // namespace Veltrane::ODBC

#endif
