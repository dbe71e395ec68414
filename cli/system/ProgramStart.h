/// The first steps of a program, and its memory.
#ifndef CLI_PROGRAMSTART_H
#define CLI_PROGRAMSTART_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

/// Returns the arguments after the program's name, in UTF-8. Output is UTF-8 from then on.
std::vector<std::string> StartProgram(int in_count, char** in_arguments);

/// Restores the console, for code that ends the program without exit. Only on Windows: Linux
/// changes nothing.
void RestoreConsoleOutput() noexcept;

/// Clears a block of malloc, including spare room that the heap has given it.
void ClearBlock(void* out_block) noexcept;

}  // namespace Veltrane::Cli

#endif
