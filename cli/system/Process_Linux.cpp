#include <fcntl.h>
#include <malloc.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "Setup/SystemCalls.h"
#include "VeltraneDialog/Wipe.h"
#include "cli/system/CommandError.h"
#include "cli/system/Input.h"
#include "cli/system/Process.h"

namespace Veltrane::Cli {

namespace {

using ODBC::SystemCalls::Descriptor;

constexpr char INTERRUPT = 3;

/// The terminal without echo. It is always restored: Ctrl-C arrives as a character that ends the
/// line, and signals are blocked.
class SilentTerminal {
public:
    explicit SilentTerminal(int in_handle) : m_handle(in_handle) {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&held, signal);
        sigprocmask(SIG_BLOCK, &held, &m_signalsBefore);
        tcgetattr(in_handle, &m_before);
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
        silent.c_lflag |= ECHONL;
        silent.c_cc[VEOL] = INTERRUPT;
        tcsetattr(in_handle, TCSAFLUSH, &silent);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;
    ~SilentTerminal() {
        tcsetattr(m_handle, TCSAFLUSH, &m_before);
        sigprocmask(SIG_SETMASK, &m_signalsBefore, nullptr);
    }

private:
    int m_handle;
    sigset_t m_signalsBefore{};
    termios m_before{};
};

}  // namespace

std::vector<std::string> StartProgram(int in_count, char** in_arguments) {
    return std::vector<std::string>(in_arguments + 1, in_arguments + in_count);
}

void ClearBlock(void* out_block) noexcept {
    explicit_bzero(out_block, malloc_usable_size(out_block));
}

bool IsInputTerminal() { return isatty(STDIN_FILENO) != 0; }

bool CanOutputShowColour() {
    const char* const terminal = std::getenv("TERM");
    return terminal != nullptr && std::string_view(terminal) != "dumb" &&
           isatty(STDOUT_FILENO) != 0;
}

std::vector<std::string> AskSecretly(const std::vector<std::string>& in_questions) {
    const Descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (!terminal.IsOpen()) Refuse(NO_TERMINAL);
    const SilentTerminal silent(terminal.Get());
    std::vector<std::string> answers;
    for (const std::string& question : in_questions) {
        dprintf(terminal.Get(), "%s", question.c_str());
        std::string& line = answers.emplace_back();
        line.reserve(MAX_LINE);
        for (char byte = 0; read(terminal.Get(), &byte, 1) == 1 && byte != '\n';) {
            if (byte == INTERRUPT) throw CommandError(EXIT_INTERRUPTED, INTERRUPTED);
            if (line.size() < MAX_LINE) line += byte;
        }
        if (line.empty()) break;
    }
    return answers;
}

void RemoveSecret(const std::string& in_name) {
    char* const value = std::getenv(in_name.c_str());
    ODBC::WipeBytes(value, std::strlen(value));
    unsetenv(in_name.c_str());
}

}  // namespace Veltrane::Cli
