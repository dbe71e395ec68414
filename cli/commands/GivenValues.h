/// Reads the keys and values from the options of add and set.
#ifndef CLI_GIVENVALUES_H
#define CLI_GIVENVALUES_H

#include "cli/dsn/DsnPlan.h"
#include "cli/line/CommandLine.h"

namespace Veltrane::Cli {

/// Makes the wish, with the password from the source that the options name.
/// @throws CommandError EXIT_USAGE for a password on the command line, for two sources and for keys
///         that cannot be set; EXIT_FAILED if the source cannot be read
DsnWish MakeWish(const CommandLine& in_line);

/// Sets PWD from the source that the options name.
/// @return false when they name no source
/// @throws CommandError as MakeWish
bool TakePassword(const CommandLine& in_line, Entries& io_values);

}  // namespace Veltrane::Cli

#endif
