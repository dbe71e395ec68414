#include "cli/dsn/NearKey.h"

#include "cli/dsn/Entries.h"
#include "cli/system/NearWord.h"

namespace Veltrane::Cli {

std::string DescribeNearKey(std::string_view in_key) {
    const std::string_view near = FindNearWord(in_key, FIELD_KEYS);
    if (near.empty()) return {};
    return "The driver has no key " + std::string(in_key) + "; did you mean " + std::string(near) +
           "?";
}

}  // namespace Veltrane::Cli
