#include "PlatformAbstraction/base/SystemError.h"

namespace Orska::Support {

std::string DescribeSystemError(std::uint32_t in_code) {
    std::string text;
    if (FormatSystemMessage(in_code, text)) {
        text.erase(text.find_last_not_of("\r\n .") + 1);
    }
    return text.empty() ? "error " + std::to_string(in_code) : text;
}

std::string DescribeLastError() { return DescribeSystemError(GetLastErrorCode()); }

}  // namespace Orska::Support
