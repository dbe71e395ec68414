/// The keys and values that the options of add and set give.
#ifndef CLI_GIVENVALUES_H
#define CLI_GIVENVALUES_H

#include "cli/dsn/DsnPlan.h"
#include "cli/line/CommandLine.h"

namespace Veltrane::Cli {

/// Reads the password from where the options say.
/// @throws CommandError EXIT_USAGE for a password on the command line, for two sources of it and
///         for keys that cannot be given; EXIT_FAILED when the source cannot be read
DsnWish MakeWish(const CommandLine& in_line);

/// Sets PWD from where the options say.
/// @return false when they name no source
/// @throws CommandError as MakeWish
bool TakePassword(const CommandLine& in_line, Entries& io_values);

}  // namespace Veltrane::Cli

#endif
