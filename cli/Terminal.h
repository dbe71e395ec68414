/// Whether a person is watching.
#ifndef CLI_TERMINAL_H
#define CLI_TERMINAL_H

namespace Veltrane::Cli {

enum class Stream { Output = 1, Error = 2 };

bool IsTerminal(Stream in_stream);

}  // namespace Veltrane::Cli

#endif
