/// The terminal, and secrets from the environment, without buffers that keep them.
#ifndef CLI_TERMINAL_H
#define CLI_TERMINAL_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

bool IsInputTerminal();
/// True on a terminal that shows colour, unless NO_COLOR is set and not empty.
bool IsOutputColoured();

/// Asks for a new password on the controlling terminal, twice and without showing it.
/// @throws CommandError EXIT_USAGE without a terminal, EXIT_INTERRUPTED after Ctrl-C, EXIT_FAILED
///         for an empty password and for two different ones
std::string AskForPassword(const std::string& in_question);

/// Asks on the controlling terminal and reads a line for each question without showing it: the part
/// of AskForPassword that differs between the systems.
inline constexpr char NO_TERMINAL[] =
    "There is no terminal to ask for the password; use --pwd-stdin, --pwd-file or --pwd-env.";
inline constexpr char INTERRUPTED[] = "Interrupted; nothing is changed.";
std::vector<std::string> AskSecretly(const std::vector<std::string>& in_questions);

/// @return false if the variable is not set
bool ReadVariable(const std::string& in_name, std::string& out_value);

/// As ReadVariable, for a password.
/// @throws CommandError EXIT_FAILED if it is empty
bool ReadSecret(const std::string& in_name, std::string& out_value);

/// As ReadSecret, but removes the variable from this process's environment and clears its memory.
bool TakeVariable(const std::string& in_name, std::string& out_value);

}  // namespace Veltrane::Cli

#endif
