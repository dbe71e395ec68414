/// The exit codes of the program, and an exception with one.
#ifndef CLI_COMMANDERROR_H
#define CLI_COMMANDERROR_H

#include <stdexcept>
#include <string>

namespace Veltrane::Cli {

enum ExitCode {
    EXIT_DONE = 0,
    EXIT_FAILED = 1,
    EXIT_USAGE = 2,
    EXIT_NOT_FOUND = 3,
    EXIT_EXISTS = 4,
    EXIT_NO_ANSWER = 5,     ///< within the time limit
    EXIT_INTERRUPTED = 130  ///< as in shells, for Ctrl-C
};

/// A failure with its own exit code. Its text names keys, never the value of a secret one.
struct CommandError : std::runtime_error {
    CommandError(ExitCode in_exitCode, const std::string& in_text)
        : std::runtime_error(in_text), m_exitCode(in_exitCode) {}
    ExitCode m_exitCode;
};

[[noreturn]] inline void FailWith(const std::string& in_text) {
    throw CommandError(EXIT_FAILED, in_text);
}

/// Throws the error for a wrong command line.
[[noreturn]] inline void Refuse(const std::string& in_text) {
    throw CommandError(EXIT_USAGE, in_text);
}

}  // namespace Veltrane::Cli

#endif
