/// Variables of the process's environment.
#ifndef PLATFORMABSTRACTION_BASE_ENVIRONMENT_H
#define PLATFORMABSTRACTION_BASE_ENVIRONMENT_H

#include <optional>
#include <string>

namespace Orska::Support {

/// Returns the variable's current value, which can be empty, or nothing if it is not set. On
/// Windows the value comes from the system, in UTF-8: the C library's copy lacks letters that the
/// code page lacks, and changes that the host has made since its start.
std::optional<std::string> GetEnvironment(const char* in_name);

}  // namespace Orska::Support

#endif
