#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string_view>

#include "PlatformAbstraction/base/FileDescriptor.h"
#include "VeltraneDialog/EditorChoice.h"
#include "VeltraneDialog/EditorProcess.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::ODBC {

namespace {

/// The settings of the controlling terminal, to restore them after an editor was killed.
class TerminalState {
public:
    /// Saves the settings if there is a terminal.
    TerminalState()
        : m_terminal(Orska::Support::AboveStandardStreams(
              open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC))) {
        if (m_terminal.IsOpen() && tcgetattr(m_terminal.Get(), &m_settings) != 0) {
            m_terminal.Close();
        }
    }

    /// If the settings have changed, restores them and clears the screen.
    void Restore() const {
        termios now{};
        if (!m_terminal.IsOpen() || tcgetattr(m_terminal.Get(), &now) != 0 ||
            now.c_lflag == m_settings.c_lflag) {
            return;
        }
        tcsetattr(m_terminal.Get(), TCSANOW, &m_settings);
        // Plain colours, a visible cursor, keys as usual, an empty screen.
        constexpr std::string_view RESET("\x1b[0m\x1b[?25h\x1b[?1l\x1b>\x1b[H\x1b[2J");
        [[maybe_unused]] const ssize_t count = write(m_terminal.Get(), RESET.data(), RESET.size());
    }

private:
    Orska::Support::FileDescriptor m_terminal;
    termios m_settings{};
};

EditorMessage RunEditorInItsTerminal(const std::string& in_program,
                                     const EditorMessage& in_request) {
    const TerminalState terminal;
    try {
        return RunEditor(in_program, in_request);
    } catch (...) {
        terminal.Restore();
        throw;
    }
}

/// Returns the answer of the first editor that can show something.
EditorMessage RunFirstEditor(const EditorMessage& in_request, const std::string& in_otherWay) {
    EditorChoice choice = ChooseEditor(LookAroundForEditors());
    for (const std::string& program : choice.m_programs) {
        EditorMessage answer = RunEditorInItsTerminal(program, in_request);
        if (answer.m_kind != EditorMessageKind::UNAVAILABLE) {
            return answer;
        }
        choice.m_problems += answer.m_reason + ". ";
    }
    throw std::runtime_error("No DSN editor can be shown. " + choice.m_problems +
                             "To work without one, " + in_otherWay);
}

}  // namespace

int VeltraneDSNDialog::ShowDialog(const char* in_otherWay) {
    EditorMessage request = ShowRequest(Values());
    request.m_testedDriver = m_testedDriver;
    const EditorMessage answer = RunFirstEditor(request, in_otherWay);
    if (answer.m_kind != EditorMessageKind::OK) {
        return RESULT_CANCEL;
    }
    Accept(answer.m_values);
    return RESULT_OK;
}

bool VeltraneDSNDialog::Ask(const char* in_text, const std::string& in_name) {
    EditorMessage request;
    request.m_kind = EditorMessageKind::ASK;
    request.m_question = {in_text, in_name};
    return RunFirstEditor(request, REQUEST_WITHOUT_WINDOW).m_kind == EditorMessageKind::YES;
}

}  // namespace Veltrane::ODBC
