#include <stdexcept>
#include <utility>

#include "VeltraneDialog/EditorChoice.h"
#include "VeltraneDialog/EditorProcess.h"
#include "VeltraneDialog/TerminalState.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::ODBC {

namespace {

EditorMessage RunEditorInItsTerminal(const std::string& in_program, const DialogValues& in_values) {
    const TerminalState terminal;
    try {
        return RunEditor(in_program, in_values);
    } catch (...) {
        terminal.Restore();
        throw;
    }
}

}  // namespace

int VeltraneDSNDialog::ShowDialog() {
    CheckAllValues();
    EditorChoice choice = ChooseEditor(LookAroundForEditors());
    for (const std::string& program : choice.m_programs) {
        EditorMessage answer = RunEditorInItsTerminal(program, m_values);
        if (answer.m_kind == EditorMessageKind::OK) {
            SetPwd({});  // a shorter one would leave the rest of it in its memory
            m_values = std::move(answer.m_values);
            return RESULT_OK;
        }
        if (answer.m_kind == EditorMessageKind::CANCEL) {
            return RESULT_CANCEL;
        }
        choice.m_problems += answer.m_reason + ". ";
    }
    throw std::runtime_error(
        "No DSN editor can be shown. " + choice.m_problems +
        "To work without one, make the request without a parent window: it then takes the values "
        "from the file that VELTRANE_DSN_INITIAL_VALUES names.");
}

}  // namespace Veltrane::ODBC
