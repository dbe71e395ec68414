/// The man page and the completion of shells, made of the table of commands when the tool is built.
#ifndef CLI_GENERATE_H
#define CLI_GENERATE_H

#include <string>

namespace Veltrane::Cli {

/// @param in_what  "man", "bash", "zsh" or "fish"
/// @throws CommandError EXIT_USAGE for anything else
std::string Generate(const std::string& in_what);

std::string MakeManualPage();
std::string MakeBashCompletion();
std::string MakeZshCompletion();
std::string MakeFishCompletion();

}  // namespace Veltrane::Cli

#endif
