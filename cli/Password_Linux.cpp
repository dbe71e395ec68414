#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "cli/CommandError.h"
#include "cli/Password.h"
#include "cli/Values.h"

namespace Veltrane::Cli {

namespace {

constexpr std::size_t MAX_PASSWORD = 4096;

/// Reads to the end of the line, past no more: what follows belongs to others.
std::string ReadLine(int in_handle, const std::string& in_source) {
    std::string line;
    line.reserve(MAX_PASSWORD);  // never moved, so that no copy stays behind
    bool hasEnd = false;
    char next = 0;
    while (!hasEnd && line.size() < MAX_PASSWORD) {
        const ssize_t count = read(in_handle, &next, 1);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            throw CommandError(EXIT_FAILED, in_source + ": " + std::strerror(errno));
        }
        hasEnd = count == 0 || next == '\n';
        if (!hasEnd) {
            line += next;
        }
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    if (!hasEnd || line.empty()) {
        throw CommandError(EXIT_USAGE, in_source + (hasEnd ? ": there is no password."
                                                           : ": the password is too long."));
    }
    return line;
}

/// An open file that is closed with its scope.
class File {
public:
    File(const std::string& in_path, int in_flags)
        : m_handle(open(in_path.c_str(), in_flags | O_CLOEXEC | O_NOCTTY)) {
        if (m_handle < 0) {
            throw CommandError(EXIT_FAILED, in_path + ": " + std::strerror(errno));
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { close(m_handle); }
    int Get() const { return m_handle; }

private:
    int m_handle;
};

/// Keeps what is typed from being shown.
class EchoOff {
public:
    explicit EchoOff(int in_terminal) : m_terminal(in_terminal) {
        m_isSet = tcgetattr(m_terminal, &m_old) == 0;
        termios silent = m_old;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        m_isSet = m_isSet && tcsetattr(m_terminal, TCSAFLUSH, &silent) == 0;
        if (!m_isSet) {
            throw CommandError(EXIT_FAILED, "The terminal cannot hide what is typed.");
        }
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;
    ~EchoOff() { tcsetattr(m_terminal, TCSAFLUSH, &m_old); }

private:
    int m_terminal;
    bool m_isSet = false;
    termios m_old{};
};

void Show(int in_terminal, const std::string& in_text) {
    if (write(in_terminal, in_text.data(), in_text.size()) < 0) {
        throw CommandError(EXIT_FAILED, "The terminal cannot be written to.");
    }
}

std::string Prompt() {
    const File terminal("/dev/tty", O_RDWR);
    Show(terminal.Get(), "Password: ");
    const EchoOff silence(terminal.Get());
    std::string password = ReadLine(terminal.Get(), "terminal");
    Show(terminal.Get(), "\n");
    return password;
}

}  // namespace

void Wipe(std::string& io_text) { explicit_bzero(io_text.data(), io_text.size()); }

std::string ReadPassword(const PasswordSource& in_source) {
    if (in_source.m_isInput) {
        return ReadLine(STDIN_FILENO, "standard input");
    }
    if (in_source.m_isPrompt) {
        return Prompt();
    }
    if (!in_source.m_file.empty()) {
        return ReadLine(File(in_source.m_file, O_RDONLY).Get(), in_source.m_file);
    }
    const char* const value = std::getenv(in_source.m_variable.c_str());
    if (value == nullptr) {
        throw CommandError(EXIT_USAGE,
                           "There is no environment variable " + in_source.m_variable + ".");
    }
    return value;
}

}  // namespace Veltrane::Cli
