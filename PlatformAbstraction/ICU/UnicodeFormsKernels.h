/// The block steps of the conversions in UnicodeForms.h, one body for a level of the processor.
///
/// Each converts whole blocks from a code point boundary on and gives how many code units of the
/// source it has done, again at a code point boundary; it stops where a block holds what it leaves
/// out, and the caller goes on code point by code point. `in_count` is in code units of both sides;
/// nothing is read or written past it, but what lies between the result and it may be scratch.
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
/// Both leave out what takes two units of UTF-16.
std::uint64_t Utf16ToUtf32_SSE2(const char* in_source, char* out_target, std::uint64_t in_count);
std::uint64_t Utf32ToUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count);

/// Units that are bytes of the same value: up to `m_last`, which is 0xFF or 0x7F, except the 32
/// that begin with `m_hole`.
struct ByteRange {
    std::uint16_t m_last;
    std::uint16_t m_hole;
};
/// Narrows units of the range.
std::uint64_t Utf16ToBytes_SSE2(const char* in_source, char* out_target, std::uint64_t in_count,
                                ByteRange in_range);

}  // namespace Orska::Support::UnicodeForms

#endif
