#include "cli/system/Words.h"

#include <algorithm>
#include <numeric>

#include "PlatformAbstraction/base/Ascii.h"

namespace Veltrane::Cli {

namespace {

/// Returns how many letters have to be added, removed or replaced.
std::size_t Distance(std::string_view in_left, std::string_view in_right) {
    using Orska::Support::ToLowerAscii;
    std::vector<std::size_t> row(in_right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char left : in_left) {
        std::size_t diagonal = row[0]++;
        for (std::size_t i = 1; i < row.size(); ++i) {
            const std::size_t replaced =
                diagonal + (ToLowerAscii(left) == ToLowerAscii(in_right[i - 1]) ? 0 : 1);
            diagonal = row[i];
            row[i] = std::min({replaced, row[i] + 1, row[i - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string JoinFirst(const std::vector<std::string>& in_names) {
    constexpr std::size_t MOST = 10;
    const std::string first = Join(std::span(in_names).first(std::min(in_names.size(), MOST)));
    if (in_names.size() <= MOST) return first;
    return first + " and " + std::to_string(in_names.size() - MOST) + " more";
}

std::string_view FindNearWord(std::string_view in_word,
                              std::span<const std::string_view> in_known) {
    constexpr std::size_t SHORT = 5;
    std::string_view nearest;
    std::size_t least = 3;
    for (const std::string_view known : in_known) {
        // Longer words are far from every word, and can be very long.
        if (in_word.size() > known.size() + 2) continue;
        const std::size_t distance = Distance(in_word, known);
        if (distance == 0) return {};
        if (distance >= least || distance > (known.size() < SHORT ? 1 : 2)) continue;
        nearest = known;
        least = distance;
    }
    return nearest;
}

}  // namespace Veltrane::Cli
