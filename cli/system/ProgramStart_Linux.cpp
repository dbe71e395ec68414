#include "cli/system/ProgramStart.h"

namespace Veltrane::Cli {

std::vector<std::string> StartProgram(int in_count, char** in_arguments) {
    return std::vector<std::string>(in_arguments + 1, in_arguments + in_count);
}

}  // namespace Veltrane::Cli
