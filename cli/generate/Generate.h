/// Makes the man page and the shells' completion from the table of commands.
#ifndef CLI_GENERATE_H
#define CLI_GENERATE_H

#include <string>

namespace Veltrane::Cli {

std::string MakeManualPage();
std::string MakeBashCompletion();
std::string MakeZshCompletion();
std::string MakeFishCompletion();

}  // namespace Veltrane::Cli

#endif
