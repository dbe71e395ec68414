/// What is wrong with a DSN.
#ifndef CLI_FAULTS_H
#define CLI_FAULTS_H

#include <string>
#include <vector>

#include "cli/Values.h"

namespace Veltrane::Cli {

/// Each with a sentence on its repair.
std::vector<std::string> FindFaults(const std::string& in_name, const Values& in_section);

}  // namespace Veltrane::Cli

#endif
