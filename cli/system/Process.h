/// What the program has from its process: arguments, a terminal, variables and memory. No buffer
/// here keeps a secret.
#ifndef CLI_PROCESS_H
#define CLI_PROCESS_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

/// Returns the arguments after the program's name, in UTF-8. Output is UTF-8 from then on.
std::vector<std::string> StartProgram(int in_count, char** in_arguments);

/// Clears a block of malloc, including spare room that the heap has given it.
void ClearBlock(void* out_block) noexcept;

bool IsInputTerminal();
/// True on a terminal that shows colour, unless NO_COLOR is set and not empty.
bool IsOutputColoured();
/// The part of IsOutputColoured that differs between the systems.
bool CanOutputShowColour();

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

/// Returns the password in an environment variable.
/// @param in_source  what names the variable, for the error text
/// @throws CommandError EXIT_FAILED if the variable is not set or empty
std::string ReadSecret(const std::string& in_source, const std::string& in_name);

/// Removes a variable from this process's environment and clears its memory.
void RemoveSecret(const std::string& in_name);

}  // namespace Veltrane::Cli

#endif
