#include "cli/examine/DriverManagerFindings.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace Veltrane::Cli {

std::string FindVersion(const std::string& in_text) {
    constexpr std::string_view DIGITS("0123456789");
    for (std::size_t at = in_text.find_first_of(DIGITS); at != std::string::npos;
         at = in_text.find_first_of(DIGITS, at)) {
        const std::size_t end =
            std::min(in_text.find_first_not_of("0123456789.", at), in_text.size());
        const std::string text = in_text.substr(at, end - at);
        const std::size_t first = text.find('.');
        if (first != text.rfind('.') && text.back() != '.') return text;
        at = end;
    }
    return {};
}

int CompareVersions(const std::string& in_left, const std::string& in_right) {
    const char* left = in_left.c_str();
    const char* right = in_right.c_str();
    while (*left != '\0' || *right != '\0') {
        char* leftEnd = nullptr;
        char* rightEnd = nullptr;
        const long leftPart = std::strtol(left, &leftEnd, 10);
        const long rightPart = std::strtol(right, &rightEnd, 10);
        if (leftPart != rightPart) return leftPart < rightPart ? -1 : 1;
        left = *leftEnd == '.' ? leftEnd + 1 : "";
        right = *rightEnd == '.' ? rightEnd + 1 : "";
    }
    return 0;
}

}  // namespace Veltrane::Cli
