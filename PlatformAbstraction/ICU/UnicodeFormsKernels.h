/// The block steps of the conversions in UnicodeForms.h, with one body for each processor level.
///
/// Each starts at a code point boundary, converts whole blocks and returns how many code units of
/// the source it has done, which ends at such a boundary too. It stops at a block with code
/// points that it leaves out; the caller converts those one by one. `in_count` counts code units
/// of both sides. Nothing is read or written past it, but the output between the result and it
/// can be scratch.
#ifndef PLATFORMABSTRACTION_ICU_UNICODEFORMSKERNELS_H
#define PLATFORMABSTRACTION_ICU_UNICODEFORMSKERNELS_H

#include <cstdint>

namespace Orska::Support::UnicodeForms {

using BlockStep = std::uint64_t (*)(const char* in_source, char* out_target,
                                    std::uint64_t in_count);

/// Copies UTF-16 while it is well-formed.
std::uint64_t CopyUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count);
std::uint64_t CopyUtf16_AVX2(const char* in_source, char* out_target, std::uint64_t in_count);
/// The same from or to UTF-16BE.
std::uint64_t Utf16FromBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count);
std::uint64_t Utf16ToBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count);
/// Both leave out code points of two UTF-16 units.
std::uint64_t Utf16ToUtf32_SSE2(const char* in_source, char* out_target, std::uint64_t in_count);
std::uint64_t Utf32ToUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count);

/// Units that become bytes of the same value: up to `m_last`, which is 0xFF or 0x7F, except the 32
/// from `m_hole` on.
struct ByteRange {
    std::uint16_t m_last;
    std::uint16_t m_hole;
};
/// Narrows units of the range.
std::uint64_t Utf16ToBytes_SSE2(const char* in_source, char* out_target, std::uint64_t in_count,
                                ByteRange in_range);

}  // namespace Orska::Support::UnicodeForms

#endif
