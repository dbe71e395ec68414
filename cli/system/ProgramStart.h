/// The first steps of a program.
#ifndef CLI_PROGRAMSTART_H
#define CLI_PROGRAMSTART_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

/// The arguments after the program's name, in UTF-8. What is printed from then on is UTF-8, too.
std::vector<std::string> StartProgram(int in_count, char** in_arguments);

/// Puts back what the console was before: for who ends the program otherwise than by its exit. On
/// Linux nothing has been changed, and there is no such function.
void RestoreConsoleOutput() noexcept;

}  // namespace Veltrane::Cli

#endif
