/// The terminal, and standard input without a buffer that would keep what it held.
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

/// The first line, without its end.
/// @param in_path  empty: standard input, which is not read further than the line
/// @throws CommandError EXIT_FAILED with path and reason, and for a line of more than 64 KiB
std::string ReadFirstLine(const std::string& in_path);

/// All of a file, or of standard input if the path is empty.
/// @throws CommandError EXIT_FAILED with path and reason, and for more than 256 MiB
std::string ReadAll(const std::string& in_path);

/// Takes a variable out of the environment of this process and clears the memory that it stood in.
/// @return false when it is not set
bool TakeVariable(const std::string& in_name, std::string& out_value);

/// As TakeVariable, but leaves the variable where it is.
bool ReadVariable(const std::string& in_name, std::string& out_value);

}  // namespace Veltrane::Cli

#endif
