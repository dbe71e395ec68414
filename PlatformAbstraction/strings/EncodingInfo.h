/// Fixed properties of the 119 encodings. All tables are constant; any thread may read them.
#ifndef PLATFORMABSTRACTION_ENCODINGINFO_H
#define PLATFORMABSTRACTION_ENCODINGINFO_H

#include <cstdint>

#include "EncodingType.h"

namespace Orska::Support {

class EncodingInfo {
public:
    /// Means "too large" where a size is returned.
    static constexpr std::uint64_t TOO_LARGE = ~std::uint64_t{0};

    /// Accepts a value whose low 16 bits, taken as unsigned, are at most 118.
    /// @throws ErrorException "EncodingNotRecog" for any other value, -1 included
    static void CheckEncodingType(EncodingType in_encoding);

    /// The ICU converter name, in ASCII, of a legal value (not checked); never null, static.
    static const char* GetName(EncodingType in_encoding) noexcept;

    /// Bytes per code unit of a legal value: 1, 2 or 4.
    static std::uint8_t GetCodeUnitWidth(EncodingType in_encoding) noexcept;

    /// The most code units that a code point takes in a legal value; more than needed for some. Too
    /// few for EUC-JP (19), which takes three bytes, and for the shift sequences of ISO-2022 and HZ
    /// (17, 22, 24, 25, 27, 28, 67). The two functions below build on it.
    static std::uint8_t GetMaxCodeUnitsPerCodePoint(EncodingType in_encoding) noexcept;

    /// True when text in US-ASCII is valid, byte for byte, in this encoding.
    static bool IsAsciiSuperset(EncodingType in_encoding) noexcept;

    /// The most bytes that a conversion can return: the source length times the integer quotient of
    /// the target's most bytes per code point by the source's code-unit width. The quotient is 0,
    /// which is no bound, if the source's code units are wider than the target's worst case
    /// (UTF-16LE to latin1): do not size a buffer by it then.
    /// @param in_sourceLength  bytes
    /// @return bytes, or TOO_LARGE
    static std::uint64_t GetWorstCaseByteCount(std::uint64_t in_sourceLength,
                                               EncodingType in_source,
                                               EncodingType in_target) noexcept;

    /// The most code units that a number of code points can take, or TOO_LARGE.
    static std::uint64_t GetWorstCaseCodeUnitCount(std::uint64_t in_codePoints,
                                                   EncodingType in_encoding) noexcept;
};

}  // namespace Orska::Support

#endif
