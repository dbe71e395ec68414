/// Converts whole strings to bytes of an encoding and back: the steps that the strings and the
/// string converters share.
///
/// UnicodeForms.h converts if it can, and malformed text is replaced here as ICU does; ICU converts
/// all other encodings. The functions hold no state and take no lock.
#ifndef PLATFORMABSTRACTION_ICU_TEXTENCODING_H
#define PLATFORMABSTRACTION_ICU_TEXTENCODING_H

#include <emmintrin.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"
#include "PlatformAbstraction/strings/EncodingType.h"

namespace Orska::Support {

/// The result of a conversion to bytes.
struct EncodedText {
    std::int64_t m_bytes = 0;  ///< written, whole code points only
    bool m_isTruncated = false;
};

/// How many bytes of a buffer a text can use. The capacity can be larger than memory, and then the
/// end of the buffer cannot be computed.
inline std::int64_t GetUsableCapacity(std::u16string_view in_text,
                                      std::int64_t in_capacity) noexcept {
    if (in_capacity > INT32_MAX) [[unlikely]] {
        return std::min(in_capacity, 16 * (static_cast<std::int64_t>(in_text.size()) + 1));
    }
    return in_capacity;
}

/// Calls a function with the start of each block of a text that is not shorter than one. The last
/// block may overlap the one before.
template <std::size_t BLOCK, class Function>
inline void ForBlocks(std::size_t in_size, Function in_function) {
    for (std::size_t at = 0; at + BLOCK < in_size; at += BLOCK) {
        in_function(at);
    }
    in_function(in_size - BLOCK);
}

/// Writes a text with one byte for each unit.
/// @param in_last  7F for ASCII, FF for latin1
/// @return false, with wrong bytes written, when a unit is above `in_last`
inline bool NarrowText(std::u16string_view in_text, char16_t in_last, char* out_bytes) noexcept {
    constexpr std::size_t BLOCK = 8;
    if (in_text.size() < BLOCK) {
        unsigned all = 0;
        for (const char16_t unit : in_text) {
            all |= unit;
            *out_bytes++ = static_cast<char>(unit);
        }
        return all <= in_last;
    }
    __m128i all = _mm_setzero_si128();
    ForBlocks<BLOCK>(in_text.size(), [&](std::size_t in_at) {
        const auto* const from = reinterpret_cast<const __m128i*>(in_text.data() + in_at);
        const __m128i units = _mm_loadu_si128(from);
        all = _mm_or_si128(all, units);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out_bytes + in_at),
                         _mm_packus_epi16(units, units));
    });
    const __m128i above = _mm_andnot_si128(_mm_set1_epi16(static_cast<short>(in_last)), all);
    return _mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) == 0xFFFF;
}

/// Writes a text with one unit for each byte, as in latin1.
/// @return true when it is US-ASCII
inline bool WidenText(std::string_view in_bytes, char16_t* out_units) noexcept {
    constexpr std::size_t BLOCK = 8;
    if (in_bytes.size() < BLOCK) {
        unsigned all = 0;
        for (const char byte : in_bytes) {
            const auto unit = static_cast<unsigned char>(byte);
            all |= unit;
            *out_units++ = unit;
        }
        return all < 0x80;
    }
    __m128i all = _mm_setzero_si128();
    ForBlocks<BLOCK>(in_bytes.size(), [&](std::size_t in_at) {
        const auto* const from = reinterpret_cast<const __m128i*>(in_bytes.data() + in_at);
        const __m128i bytes = _mm_loadl_epi64(from);
        all = _mm_or_si128(all, bytes);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out_units + in_at),
                         _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    });
    return _mm_movemask_epi8(all) == 0;
}

/// Encodes without ICU. Writes nothing after the bytes, except zeros in place of a code point that
/// did not fit.
/// @param in_capacity  bytes
/// @param in_isScratchAllowed  the rest of the buffer may be overwritten
/// @return false, with nothing written, for an encoding that only ICU has
bool EncodeDirectly(std::u16string_view in_text, char* out_buffer, std::int64_t in_capacity,
                    EncodingType in_encoding, EncodedText& out_done,
                    bool in_isScratchAllowed = false) noexcept;

/// The bytes that EncodeDirectly needs for a whole text, or -1 for an encoding that only ICU has.
std::int64_t MeasureDirectly(std::u16string_view in_text, EncodingType in_encoding) noexcept;

/// Encodes with ICU: the whole text, ended in the encoding's initial state, or else the most whole
/// code points that fit together with their end. The rest of the buffer is then zeros.
/// @param io_converter  in any state, which does not affect the result; so in the functions below
/// @param out_attempts  how many conversions it took, counting one that failed
EncodedText EncodeThroughIcu(UConverter& io_converter, std::u16string_view in_text,
                             char* out_buffer, std::int64_t in_capacity, int& out_attempts,
                             UErrorCode& io_status);

/// The bytes that EncodeThroughIcu needs for a whole text.
std::int64_t MeasureThroughIcu(UConverter& io_converter, std::u16string_view in_text,
                               UErrorCode& io_status);

/// Decodes without ICU.
/// @param in_decoder  the GetUtf16Decoder of the encoding
/// @param out_units  room for GetMostUtf16Units
/// @return units written
std::int32_t DecodeDirectly(std::string_view in_bytes, EncodingType in_encoding,
                            TranscoderFunction in_decoder, char16_t* out_units,
                            std::int32_t in_room) noexcept;

/// Decodes with ICU and appends.
void DecodeThroughIcu(UConverter& io_converter, std::string_view in_bytes,
                      icu::UnicodeString& io_text, UErrorCode& io_status);

}  // namespace Orska::Support

#endif
