/// The transcoder: direct conversion between the seven common encodings, without ICU, without an
/// intermediate form and without allocation. Each pair has one function, which works on a source
/// and a target buffer and sets exact positions, so that a caller can go on with the next piece.
///
/// Every function follows these rules, with the same bytes, positions and result at every
/// processor level:
/// - It converts one code point after another from the source position on. It stops before a code
///   point, in this order of tests, if the source is used up (DONE), the end of the source cuts the
///   code point off (INCOMPLETE), it is invalid (INVALID) or its output does not fit (FULL). So a
///   source that is used up is DONE even if the target is full, and malformed input is reported
///   even if the target has no room left.
/// - On return the source position is at the first code point that was not converted, and the
///   target position is after the last converted one. A code point is never written in part.
/// - Bytes outside [position, length) of either buffer are neither read nor written. Bytes of the
///   target between the returned position and its length may be overwritten with scratch.
///
/// Invalid input:
/// - UTF-8: overlong forms, surrogates, values above U+10FFFF, a continuation byte without a lead,
///   a lead without its continuation bytes, and the bytes C0, C1, F5 to FF. A sequence that the end
///   of the source cuts off is INCOMPLETE if some continuation makes it valid, otherwise INVALID
///   (as ED A0 at the end).
/// - UTF-16: a trail surrogate without a lead, a lead that is not followed by a trail. A single
///   byte at the end, and a lead surrogate with fewer than two bytes after it, are INCOMPLETE.
/// - UTF-32: surrogates and values above U+10FFFF. One to three bytes at the end are INCOMPLETE.
/// - latin1 and cp1252: nothing. The five bytes that cp1252 leaves undefined (81, 8D, 8F, 90, 9D)
///   are the code points of the same value.
///
/// For a single-byte target a code point up to U+00FF becomes the byte of that value and any other
/// becomes 1A, the ASCII substitute. On purpose this is so for cp1252 too: U+20AC becomes 1A
/// although cp1252 has a byte for it, and latin1 to cp1252 copies. A byte order mark is a code
/// point like any other.
///
/// The functions hold no state; any thread may call them.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_TRANSCODER_H
#define PLATFORMABSTRACTION_ICU_SICONV_TRANSCODER_H

#include <cstdint>

#include "../../base/CpuLevel.h"
#include "../../strings/EncodingType.h"

namespace Orska::Support {

/// A buffer of the caller and how much of it is used. All sizes are bytes.
template <class Byte>
struct TranscoderContext {
    Byte* m_data;              ///< may be null when the length is 0
    std::uint64_t m_length;    ///< bytes
    std::uint64_t m_position;  ///< bytes from m_data; at most m_length, which is not checked
};

using TranscoderSource = TranscoderContext<const char>;
using TranscoderTarget = TranscoderContext<char>;

/// Results of a transcoder function; see the file comment for their order.
enum TranscoderResult : std::int32_t {
    TRANSCODER_DONE = 0,         ///< the source is used up
    TRANSCODER_INVALID = -1,     ///< malformed input at the source position
    TRANSCODER_INCOMPLETE = -2,  ///< the source ends inside the code point at the source position
    TRANSCODER_FULL = -3,        ///< the code point at the source position does not fit
};

using TranscoderFunction = std::int32_t (*)(TranscoderSource& io_source,
                                            TranscoderTarget& io_target);

/// The index of encodings that the transcoder does not know.
constexpr int TRANSCODER_NO_INDEX = 7;

/// The index of an encoding: its value for 0 to 6, 6 for ibm-5348 (96), else TRANSCODER_NO_INDEX.
int GetTranscoderIndex(EncodingType in_encoding) noexcept;

/// The function of a pair for the level in use (GetCpuLevel).
/// @param in_source, in_target indexes from GetTranscoderIndex
/// @return null when the pair has none
TranscoderFunction GetTranscoder(int in_source, int in_target) noexcept;

/// The function of a pair for a given level, for tests and benchmarks. The caller must check that
/// this processor has the level (DetectCpuLevel).
TranscoderFunction GetTranscoderAtLevel(int in_source, int in_target, CpuLevel in_level) noexcept;

/// The scalar function of a pair, which defines the results of the others; null when the pair
/// has none.
TranscoderFunction GetScalarTranscoder(int in_source, int in_target) noexcept;

/// The most bytes of a conversion: ratio * source bytes / 4, rounded down, at most INT64_MAX. From
/// latin1 and cp1252 the ratio to UTF-8 is that of ASCII text: a byte from 80 on takes two bytes
/// there, or three.
/// @return bytes; -1 when either index is TRANSCODER_NO_INDEX
std::int64_t GetTranscoderWorstCase(int in_source, int in_target,
                                    std::uint64_t in_sourceBytes) noexcept;

}  // namespace Orska::Support

#endif
