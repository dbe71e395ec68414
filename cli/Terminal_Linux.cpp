#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "Setup/SystemCalls.h"
#include "VeltraneDialog/Wipe.h"
#include "cli/CommandError.h"
#include "cli/HeldSignals.h"
#include "cli/Terminal.h"

namespace Veltrane::Cli {

namespace {

using ODBC::SystemCalls::FileHandle;

constexpr std::size_t MAX_LINE = 64 << 10;
constexpr std::size_t MAX_FILE = 256 << 20;

std::string Name(const std::string& in_path) {
    return in_path.empty() ? "standard input" : in_path;
}

[[noreturn]] void Fail(const std::string& in_path, const char* in_reason) {
    throw CommandError(EXIT_FAILED, Name(in_path) + ": cannot read: " + in_reason);
}

/// An open file, or standard input, which is not closed.
class Input {
public:
    explicit Input(const std::string& in_path) : m_path(in_path) {
        if (in_path.empty()) return;
        m_file = FileHandle(open(in_path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
        if (!m_file.IsOpen()) Fail(in_path, std::strerror(errno));
    }
    std::size_t Read(char* out_bytes, std::size_t in_size) const {
        for (;;) {
            const ssize_t count =
                read(m_path.empty() ? STDIN_FILENO : m_file.Get(), out_bytes, in_size);
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR) Fail(m_path, std::strerror(errno));
        }
    }

private:
    const std::string& m_path;
    FileHandle m_file;
};

/// Reads a line byte by byte, so that what follows it stays where it is.
std::string ReadLine(const Input& in_input, const std::string& in_path) {
    std::string line;
    line.reserve(MAX_LINE);  // one place in memory, cleared when the string goes
    char byte = 0;
    while (in_input.Read(&byte, 1) == 1 && byte != '\n') {
        if (line.size() == MAX_LINE) Fail(in_path, "the first line is too long");
        line += byte;
    }
    if (line.ends_with('\r')) line.pop_back();
    std::string result(line);
    ODBC::Wipe(line);
    return result;
}

constexpr char INTERRUPT = 3;

/// The terminal without echo. Ctrl-C comes as a character that ends the line, so that it never
/// stays so.
class SilentTerminal {
public:
    explicit SilentTerminal(int in_handle) : m_handle(in_handle) {
        tcgetattr(in_handle, &m_before);
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
        silent.c_lflag |= ECHONL;
        silent.c_cc[VEOL] = INTERRUPT;
        tcsetattr(in_handle, TCSAFLUSH, &silent);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;
    ~SilentTerminal() { tcsetattr(m_handle, TCSAFLUSH, &m_before); }

private:
    int m_handle;
    termios m_before{};
};

void WriteText(int in_handle, std::string_view in_text) {
    [[maybe_unused]] const ssize_t ignored = write(in_handle, in_text.data(), in_text.size());
}

}  // namespace

bool IsInputTerminal() { return isatty(STDIN_FILENO) != 0; }

bool IsErrorTerminal() { return isatty(STDERR_FILENO) != 0; }

bool IsOutputColoured() {
    const char* const noColour = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    const bool isRefused = (noColour != nullptr && *noColour != '\0') || terminal == nullptr ||
                           std::string_view(terminal) == "dumb";
    return !isRefused && isatty(STDOUT_FILENO) != 0;
}

std::string AskSecretly(const std::string& in_question) {
    const FileHandle terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (!terminal.IsOpen()) {
        throw CommandError(EXIT_USAGE,
                           "There is no terminal to ask for the password; use --pwd-stdin, "
                           "--pwd-file or --pwd-env.");
    }
    const HeldSignals held;
    const SilentTerminal silent(terminal.Get());
    WriteText(terminal.Get(), in_question);
    std::string line;
    line.reserve(MAX_LINE);
    for (char byte = 0; read(terminal.Get(), &byte, 1) == 1 && byte != '\n';) {
        if (byte == INTERRUPT) throw CommandError(EXIT_FAILED, "Interrupted; nothing is changed.");
        if (line.size() < MAX_LINE) line += byte;
    }
    return line;
}

std::string ReadFirstLine(const std::string& in_path) {
    const Input input(in_path);
    return ReadLine(input, in_path);
}

std::string ReadAll(const std::string& in_path) {
    const Input input(in_path);
    std::string text;
    for (;;) {
        const std::size_t size = text.size();
        text.resize(size + (64 << 10));
        const std::size_t count = input.Read(text.data() + size, text.size() - size);
        text.resize(size + count);
        if (count == 0) return text;
        if (text.size() > MAX_FILE) Fail(in_path, "larger than 256 MiB");
    }
}

bool TakeVariable(const std::string& in_name, std::string& out_value) {
    char* const value = std::getenv(in_name.c_str());
    if (value == nullptr) return false;
    out_value = value;
    ODBC::WipeBytes(value, std::strlen(value));
    unsetenv(in_name.c_str());
    return true;
}

bool ReadVariable(const std::string& in_name, std::string& out_value) {
    const char* const value = std::getenv(in_name.c_str());
    if (value != nullptr) out_value = value;
    return value != nullptr;
}

}  // namespace Veltrane::Cli
