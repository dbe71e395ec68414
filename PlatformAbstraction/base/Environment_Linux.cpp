#include <cstdlib>

#include "PlatformAbstraction/base/Environment.h"

namespace Orska::Support {

std::optional<std::string> GetEnvironment(const char* in_name) {
    const char* value = std::getenv(in_name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace Orska::Support
