/// The terminal and the environment, without a buffer that would keep what it held.
#ifndef CLI_TERMINAL_H
#define CLI_TERMINAL_H

#include <string>

namespace Veltrane::Cli {

bool IsInputTerminal();
bool IsErrorTerminal();
/// True on a terminal that shows colour, unless NO_COLOR is set and not empty.
bool IsOutputColoured();

/// Asks on the controlling terminal and reads a line without showing it.
/// @throws CommandError EXIT_USAGE without a terminal
std::string AskSecretly(const std::string& in_question);

/// Takes a variable out of the environment of this process and clears the memory that it stood in.
/// @return false when it is not set
bool TakeVariable(const std::string& in_name, std::string& out_value);

/// As TakeVariable, but leaves the variable where it is.
bool ReadVariable(const std::string& in_name, std::string& out_value);

}  // namespace Veltrane::Cli

#endif
