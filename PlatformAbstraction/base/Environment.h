/// Variables of the process's environment.
#ifndef PLATFORMABSTRACTION_BASE_ENVIRONMENT_H
#define PLATFORMABSTRACTION_BASE_ENVIRONMENT_H

#include <optional>
#include <string>

namespace Orska::Support {

/// The value as the system has it now, also where an empty one is set; absent when there is none.
/// On Windows in UTF-8: the C library's copy has lost the letters that the code page lacks, and
/// what the host has set since its start.
std::optional<std::string> GetEnvironment(const char* in_name);

}  // namespace Orska::Support

#endif
