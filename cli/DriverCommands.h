/// The commands of veltrane-dsn on drivers and files.
#ifndef CLI_DRIVERCOMMANDS_H
#define CLI_DRIVERCOMMANDS_H

#include "cli/Commands.h"

namespace Veltrane::Cli {

void RegisterTheDriver(const Options& in_options);
void UnregisterTheDriver(const Options& in_options);
void PrintDrivers(const Options& in_options);
/// Prints the paths of the driver manager's files and of the setup library.
void PrintPlaces(const Options& in_options);

}  // namespace Veltrane::Cli

#endif
