/// The command line of veltrane-dsn: commands, options and their help.
#ifndef CLI_COMMANDLINE_H
#define CLI_COMMANDLINE_H

namespace Veltrane::Cli {

/// Parses and runs.
/// @return the exit code
/// @throws what the commands throw
int RunCommandLine(int in_count, char** in_arguments);

}  // namespace Veltrane::Cli

#endif
