#include "cli/line/Generate.h"

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

std::string Generate(const std::string& in_what) {
    if (in_what == "man") return MakeManualPage();
    if (in_what == "bash") return MakeBashCompletion();
    if (in_what == "zsh") return MakeZshCompletion();
    if (in_what == "fish") return MakeFishCompletion();
    throw CommandError(EXIT_USAGE, "--generate is followed by man, bash, zsh or fish.");
}

}  // namespace Veltrane::Cli
