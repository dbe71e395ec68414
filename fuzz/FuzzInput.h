/// Shared by the fuzzers: the parts of an input, and the check of an invariant.
#ifndef FUZZ_FUZZINPUT_H
#define FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace Orska::Fuzz {

/// Separates the parts of an input, so that seeds can be written by hand.
constexpr char PART_END = '\x1E';

/// Reads the parts of an input in order. After its end it returns zeros and empty texts.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* in_data, std::size_t in_size)
        : m_rest(reinterpret_cast<const char*>(in_data), in_size) {}

    std::uint8_t TakeByte() {
        if (m_rest.empty()) return 0;
        const auto byte = static_cast<std::uint8_t>(m_rest.front());
        m_rest.remove_prefix(1);
        return byte;
    }
    /// The text up to the next PART_END, which is dropped.
    std::string TakePart() {
        const std::size_t end = m_rest.find(PART_END);
        std::string part(m_rest.substr(0, end));
        m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
        return part;
    }
    std::string TakeRest() {
        std::string rest(m_rest);
        m_rest = {};
        return rest;
    }

private:
    std::string_view m_rest;
};

/// Ends the process when an invariant is broken, which the fuzzer counts as a finding.
inline void Require(bool in_holds, const char* in_what, std::string_view in_detail = "") {
    if (in_holds) return;
    std::fprintf(stderr, "broken: %s: %.*s\n", in_what, static_cast<int>(in_detail.size()),
                 in_detail.data());
    std::abort();
}

}  // namespace Orska::Fuzz

#endif
