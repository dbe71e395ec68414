// Converts to UTF-8 with AVX-512 VBMI2: units are spread over lanes that hold their bytes, and a
// compress instruction keeps the bytes to write. Included by kernels only; everything is local to
// the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_TOUTF8_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_TOUTF8_H

#include "PlatformAbstraction/ICU/Siconv/windows512/Driver.h"

namespace Orska::Support::Siconv {

namespace {

// Writers need room for 64 bytes after every vector's text.

// Writes a vector of which the first in_size bytes are kept.
ORSKA_INLINE void PutFirst(char*& io_to, __m512i in_bytes, std::uint64_t in_size) {
    _mm512_storeu_si512(io_to, in_bytes);
    io_to += in_size;
}
// Writes the bytes of in_keep.
ORSKA_INLINE void PutKept(char*& io_to, __m512i in_bytes, std::uint64_t in_keep) {
    PutFirst(io_to, _mm512_maskz_compress_epi8(in_keep, in_bytes), CountBits(in_keep));
}

// The last byte of every lane of 32 bits, and the first of every lane of 16.
constexpr std::uint64_t LANE32_LAST = 0x8888888888888888;
constexpr std::uint64_t LANE16_FIRST = 0x5555555555555555;

// Spreads the bits of code points over the bytes of a sequence of four, and sets the marks.
ORSKA_INLINE __m512i SpreadBits(__m512i in_codePoints, __m512i in_marks) {
    const __m512i shifts = All64<0x20262C3200060C12>();
    const __m512i bits = _mm512_multishift_epi64_epi8(shifts, in_codePoints);
    // (bits & 3F) | marks
    return _mm512_ternarylogic_epi32(bits, All32<0x3F3F3F3F>(), in_marks, 0xEA);
}

// Spreads sixteen valid code points to lanes that end with their bytes; the other bytes are zero.
template <bool HAS_LONG>
ORSKA_INLINE __m512i SpreadToUtf8(__m512i in_codePoints) {
    const __m512i at = in_codePoints;
    __m512i marks = All32<0x8080E000>();
    if constexpr (HAS_LONG) {
        marks = _mm512_mask_mov_epi32(marks, _mm512_cmpgt_epu32_mask(at, All32<0xFFFF>()),
                                      All32<0x808080F0>());
    }
    marks = _mm512_mask_mov_epi32(marks, _mm512_cmplt_epu32_mask(at, All32<0x800>()),
                                  All32<0x80C00000>());
    const __m512i lanes = SpreadBits(at, marks);
    return _mm512_mask_slli_epi32(lanes, _mm512_cmplt_epu32_mask(at, All32<0x80>()), at, 24);
}

// in_active: the lanes to write.
template <bool HAS_LONG>
ORSKA_INLINE void PutCodePoints(__m512i in_codePoints, __mmask16 in_active, char*& io_to) {
    const __m512i lanes = _mm512_maskz_mov_epi32(in_active, SpreadToUtf8<HAS_LONG>(in_codePoints));
    const std::uint64_t keep = _mm512_movepi8_mask(lanes) | _pdep_u64(in_active, LANE32_LAST);
    if (HAS_LONG && keep == ~std::uint64_t{0}) {  // all have four bytes
        PutFirst(io_to, lanes, WINDOW);
    } else {
        PutKept(io_to, lanes, keep);
    }
}

// Writes units below 800.
ORSKA_INLINE void PutUnits2(__m512i in_units, char*& io_to) {
    const __m512i shifts = All64<0x3036202610160006>();
    const __m512i bits = _mm512_multishift_epi64_epi8(shifts, in_units);
    // (bits & 3F1F) | 80C0
    const __m512i both = _mm512_ternarylogic_epi32(bits, All16<0x3F1F>(), All16<0x80C0>(), 0xEA);
    const __mmask32 isAscii = _mm512_testn_epi16_mask(in_units, All16<0xFF80>());
    const __m512i lanes = _mm512_mask_mov_epi16(both, isAscii, in_units);
    PutKept(io_to, lanes, _mm512_movepi8_mask(lanes) | LANE16_FIRST);
}

// Writes units that have three bytes each.
ORSKA_INLINE void PutUnits3Only(__m512i in_units, char*& io_to) {
    const __m512i order = _mm512_set_epi32(
        0, 0, 0, 0, 0x3F3E3D3B, 0x3A393736, 0x35333231, 0x2F2E2D2B, 0x2A292726, 0x25232221,
        0x1F1E1D1B, 0x1A191716, 0x15131211, 0x0F0E0D0B, 0x0A090706, 0x05030201);
    const __m256i halves[2] = {GetLowHalf(in_units), GetHighHalf(in_units)};
    for (const __m256i& half : halves) {
        const __m512i lanes = SpreadBits(_mm512_cvtepu16_epi32(half), All32<0x8080E000>());
        PutFirst(io_to, _mm512_permutexvar_epi8(order, lanes), 48);
    }
}

// Writes units that are not surrogates.
ORSKA_INLINE void PutUnits(__m512i in_units, char*& io_to) {
    const __mmask32 isLong = _mm512_test_epi16_mask(in_units, All16<0xF800>());
    if (isLong == 0) {
        PutUnits2(in_units, io_to);
    } else if (isLong == 0xFFFFFFFF) {
        PutUnits3Only(in_units, io_to);
    } else {
        PutCodePoints<false>(_mm512_cvtepu16_epi32(GetLowHalf(in_units)), 0xFFFF, io_to);
        PutCodePoints<false>(_mm512_cvtepu16_epi32(GetHighHalf(in_units)), 0xFFFF, io_to);
    }
}

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
