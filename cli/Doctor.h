/// The examination of an installation.
#ifndef CLI_DOCTOR_H
#define CLI_DOCTOR_H

#include "cli/Commands.h"

namespace Veltrane::Cli {

/// Prints what is wrong with driver, files and DSNs, each with a sentence on its repair, and what
/// is known about the driver manager.
/// @throws CommandError (failed) when something is wrong
void Examine(const Options& in_options);

}  // namespace Veltrane::Cli

#endif
