/// The commands of veltrane-dsn. Each prints its result on standard output and throws on failure.
#ifndef CLI_COMMANDS_H
#define CLI_COMMANDS_H

#include <map>
#include <stdexcept>
#include <string>

#include "cli/DriverManager.h"

namespace Veltrane::Cli {

/// The exit codes of the program.
enum ExitCode {
    EXIT_DONE = 0,
    EXIT_FAILED = 1,
    EXIT_USAGE = 2,
    EXIT_NOT_FOUND = 3,
    EXIT_EXISTS = 4
};

/// A failure with an exit code of its own.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitCode in_exitCode, const std::string& in_text)
        : std::runtime_error(in_text), m_exitCode(in_exitCode) {}
    ExitCode GetExitCode() const { return m_exitCode; }

private:
    ExitCode m_exitCode;
};

/// Values by profile key ("Server", "PWD" ...), in UTF-8; only the keys that were given.
using GivenValues = std::map<std::string, std::string>;

void AddDsn(const DriverManager& in_manager, const std::string& in_driver,
            const std::string& in_dsn, const GivenValues& in_values);

/// Changes the given values of a DSN and keeps the others.
void SetDsn(const DriverManager& in_manager, const std::string& in_dsn,
            const GivenValues& in_values);

void RemoveDsn(const DriverManager& in_manager, const std::string& in_dsn);

/// Prints the DSN's values, the password masked.
void ShowDsn(const DriverManager& in_manager, const std::string& in_dsn);

/// Prints the names of the driver's DSNs.
void ListDsns(const DriverManager& in_manager, const std::string& in_driver);

}  // namespace Veltrane::Cli

#endif
