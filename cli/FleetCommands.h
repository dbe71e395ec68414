/// The commands of veltrane-dsn on many DSNs.
#ifndef CLI_FLEETCOMMANDS_H
#define CLI_FLEETCOMMANDS_H

#include "cli/Commands.h"

namespace Veltrane::Cli {

/// Makes the DSNs what a description says, one after the other. What is wrong with the description
/// itself is found before anything is done; a DSN that fails does not stop the others.
/// @throws CommandError (failed) when a DSN failed, behind the report on all
void ApplyDescription(const Options& in_options);

/// Prints a description of the driver's DSNs that ApplyDescription takes. Passwords are left out
/// unless they are asked for.
void ExportDsns(const Options& in_options);

/// Prints what is wrong with DSNs.
/// @throws CommandError (failed) when something is
void CheckDsns(const Options& in_options);

}  // namespace Veltrane::Cli

#endif
