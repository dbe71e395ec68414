#include "cli/system/ProgramStart.h"

#include <malloc.h>

#include <cstring>

namespace Veltrane::Cli {

std::vector<std::string> StartProgram(int in_count, char** in_arguments) {
    return std::vector<std::string>(in_arguments + 1, in_arguments + in_count);
}

void ClearBlock(void* out_block) noexcept {
    explicit_bzero(out_block, malloc_usable_size(out_block));
}

}  // namespace Veltrane::Cli
