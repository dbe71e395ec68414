/// What is known to be wrong with the installed driver manager, and with the environment.
#ifndef CLI_DRIVERMANAGERFINDINGS_H
#define CLI_DRIVERMANAGERFINDINGS_H

#include "cli/examine/DriverManagerProbe.h"
#include "cli/examine/Finding.h"

namespace Veltrane::Cli {

/// The defects that this version of the driver manager is known for, and its version as a note.
Findings ExamineDriverManager(const DriverManagerInfo& in_info);

/// The environment variables that send the driver manager to other files.
Findings ExamineEnvironment();

}  // namespace Veltrane::Cli

#endif
