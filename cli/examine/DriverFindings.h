/// Examines the registration of a driver and the libraries that it names.
#ifndef CLI_DRIVERFINDINGS_H
#define CLI_DRIVERFINDINGS_H

#include <string>

#include "cli/examine/Finding.h"
#include "cli/examine/LibraryProbe.h"

namespace Veltrane::Cli {

/// Loads the driver's libraries, and sends a request that changes nothing through the installer,
/// each in a separate process.
/// @throws CommandError if odbcinst.ini exists but cannot be read
Findings ExamineDriver(const std::string& in_driver);

/// Loads the library that programs connect with, in a separate process.
/// @param in_driver  a name, or the library's path, as a DSN can have it
/// @throws CommandError as ExamineDriver
Findings ExamineDriverLibrary(const std::string& in_driver);

/// Returns the finding for a library that cannot be used.
/// @param in_driver  the driver's name; empty if a DSN has the library's path
/// @param in_entry  the key in odbcinst.ini that names it, such as "Setup"
Finding DescribeFault(const LibraryProbe& in_probe, const std::string& in_driver,
                      const std::string& in_entry, const std::string& in_library);

}  // namespace Veltrane::Cli

#endif
