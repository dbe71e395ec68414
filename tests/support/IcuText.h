/// Texts for the tests of conversions, and their bytes by ICU.
#ifndef TESTS_SUPPORT_ICUTEXT_H
#define TESTS_SUPPORT_ICUTEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "PlatformAbstraction/strings/EncodingType.h"
#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support::Testing {

/// The bytes of a text in an encoding, as converted by ICU, ended in the initial state.
std::string EncodeWithIcu(std::u16string_view in_text, EncodingType in_encoding);

/// A string of these units, lone surrogates included.
orska_wstring MakeString(std::u16string_view in_text);

/// A text of several scripts, ASCII runs and code points that few encodings have.
std::u16string GetMixedText();

/// A small generator with a fixed sequence for each seed.
class Random {
public:
    explicit Random(std::uint64_t in_seed) : m_state(in_seed * 2 + 1) {}
    std::uint32_t Below(std::uint32_t in_end) {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(m_state >> 33) % in_end;
    }

private:
    std::uint64_t m_state;
};

/// Random text of code points of all kinds: ASCII, combining marks, CJK, surrogate pairs, and
/// lone surrogates.
std::u16string MakeRandomText(Random& io_random, std::size_t in_codePoints);

}  // namespace Orska::Support::Testing

#endif
