#include "VeltraneDialog/editors/TerminalScreen.h"

#include <signal.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <stdexcept>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/editors/EditorMain.h"
#include "VeltraneDialog/editors/Texts.h"

namespace Veltrane::ODBC {

namespace {

constexpr int QUESTION_WIDTH = 64;
constexpr int FLEX = 4;

/// Process-wide: set by the handler of the signals that end the editor, read by the screen.
volatile sig_atomic_t s_isEnding = 0;
/// Process-wide: the descriptor that wakes the form, for the handler; -1 while there is no screen.
volatile sig_atomic_t s_wake = -1;

void OnEndingSignal(int) {
    s_isEnding = 1;
    if (s_wake < 0) return;
    const int error = errno;  // of the interrupted code
    eventfd_write(s_wake, 1);
    errno = error;
}

void CatchEndingSignals() {
    struct sigaction action {};
    action.sa_handler = OnEndingSignal;
    for (const int number : {SIGTERM, SIGHUP, SIGINT}) {
        sigaction(number, &action, nullptr);
    }
}

}  // namespace

TerminalScreen::TerminalScreen() : m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    s_wake = m_wake.Get();
    CatchEndingSignals();
    if (newtInit() != 0) {
        throw EditorUnavailable("The terminal cannot show a form");
    }
    newtCls();
}

TerminalScreen::~TerminalScreen() {
    s_wake = -1;  // another file can get this number
    newtFinished();
}

void TerminalScreen::Run(newtComponent in_form, newtExitStruct& out_exit) const {
    newtFormRun(in_form, &out_exit);
    if (s_isEnding != 0) {
        throw std::runtime_error("The editor was told to end.");
    }
}

void TerminalScreen::FailWithoutTerminal() { throw std::runtime_error("The terminal has gone."); }

void TerminalScreen::Wake() const { eventfd_write(m_wake.Get(), 1); }

void TerminalScreen::Drain() const {
    eventfd_t count = 0;
    eventfd_read(m_wake.Get(), &count);
}

int ColumnsOf(const std::string& in_text) {
    std::wstring wide(in_text.size() + 1, L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), in_text.c_str(), wide.size());
    const int columns = length == static_cast<std::size_t>(-1) ? -1 : wcswidth(wide.data(), length);
    return columns < 0 ? static_cast<int>(in_text.size()) : columns;
}

/// False if the user has chosen colours.
bool UsesDefaultColors() {
    return std::getenv("NEWT_COLORS") == nullptr && std::getenv("NEWT_COLORS_FILE") == nullptr &&
           std::getenv("NEWT_MONO") == nullptr;
}

bool AskQuestion(const std::string& in_question, int in_host) {
    const TerminalScreen screen;
    const newtComponent text = newtTextboxReflowed(1, 1, const_cast<char*>(in_question.c_str()),
                                                   QUESTION_WIDTH, FLEX, FLEX, 0);
    const int height = newtTextboxGetNumLines(text);
    newtCenteredWindow(QUESTION_WIDTH + 8, static_cast<unsigned>(height + 4), "Veltrane");
    const newtComponent yes = newtCompactButton(2, height + 2, TranslatePlain(TEXT_YES).c_str());
    const newtComponent no = newtCompactButton(16, height + 2, TranslatePlain(TEXT_NO).c_str());
    const newtComponent form = newtForm(nullptr, nullptr, NEWT_FLAG_NOF12);
    newtFormAddComponents(form, text, yes, no, nullptr);
    newtFormSetCurrent(form, no);
    for (const int key : {NEWT_KEY_ESCAPE + 0, KEY_CONTROL_C}) newtFormAddHotKey(form, key);
    newtFormWatchFd(form, screen.GetWake(), NEWT_FD_READ);
    newtFormWatchFd(form, in_host, NEWT_FD_READ);
    newtExitStruct exit{};
    screen.Run(form, exit);
    newtFormDestroy(form);
    if (exit.reason == newtExitStruct::NEWT_EXIT_ERROR) TerminalScreen::FailWithoutTerminal();
    return exit.reason == newtExitStruct::NEWT_EXIT_COMPONENT && exit.u.co == yes;
}

}  // namespace Veltrane::ODBC
