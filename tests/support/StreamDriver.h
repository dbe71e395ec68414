/// Runs stream converters over cut sources and targets, for tests.
#ifndef TESTS_SUPPORT_STREAMDRIVER_H
#define TESTS_SUPPORT_STREAMDRIVER_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformAbstraction/ICU/StreamConverter.h"
#include "PlatformAbstraction/strings/EncodingType.h"

namespace Orska::Support::Testing {

/// Returns the size of the next piece or target, in bytes.
using NextSize = std::function<std::uint64_t()>;

/// Converts a whole text and joins the targets.
///
/// Fails the test when a converter writes past a target, misses a NUL, miscounts, or makes no
/// progress for many targets in a row.
/// @param in_isWithNul  convert with DoConvertWithNul
std::string ConvertInPieces(StreamConverter& io_converter, std::string_view in_source,
                            const NextSize& in_pieceSize, const NextSize& in_targetSize,
                            bool in_isWithNul = false);

/// Converts a whole text as one last piece into one target that is large enough.
std::string ConvertAtOnce(StreamConverter& io_converter, std::string_view in_source);

/// The bytes of a text in an encoding, as converted by ICU, ended in the initial state.
std::string EncodeWithIcu(std::u16string_view in_text, EncodingType in_encoding);

/// Converts through ICU: to UTF-16 and on, with malformed bytes replaced.
std::string ConvertWithIcu(const std::string& in_source, EncodingType in_from, EncodingType in_to);

/// Checks that cut conversions of a source write the same bytes as one at once, and that these are
/// ICU's if the pair's converter is a WideStreamConverter. One round goes byte by byte, the others
/// use random sizes, every second one with NULs.
void CheckCuts(EncodingType in_from, EncodingType in_to, const std::string& in_source,
               std::uint32_t in_seed, int in_rounds);

/// CheckCuts for every pair of the lists, on the mixed text.
void CheckPairs(const std::vector<int>& in_from, const std::vector<int>& in_to, int in_rounds);

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

}  // namespace Orska::Support::Testing

#endif
