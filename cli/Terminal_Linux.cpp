#include <unistd.h>

#include "cli/Terminal.h"

namespace Veltrane::Cli {

bool IsTerminal(Stream in_stream) { return isatty(static_cast<int>(in_stream)) == 1; }

}  // namespace Veltrane::Cli
