// Converts UTF-32 with instructions up to AVX-512 VBMI2.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF32_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF32_H

#include "PlatformAbstraction/ICU/Siconv/windows512/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

template <bool IS_BIG>
class Utf32ToUtf8Windows {
public:
    static constexpr std::uint64_t SOURCE_UNIT = 4;
    static constexpr std::uint64_t TARGET_UNIT = 1;
    static constexpr std::uint64_t ROOM = WINDOW;

    static ORSKA_INLINE bool IsPlain(__m512i in_bytes) {
        return _mm512_test_epi32_mask(in_bytes, All32 < IS_BIG ? 0x80FFFFFF : 0xFFFFFF80 > ()) == 0;
    }
    static ORSKA_INLINE void WritePlain(char* out_to, __m512i in_bytes) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out_to), Narrow(in_bytes));
    }
    static ORSKA_INLINE void WritePlainPart(char* out_to, __m512i in_bytes, std::uint64_t in_size) {
        _mm_mask_storeu_epi8(out_to, static_cast<__mmask16>(GetLowBits(in_size / 4)),
                             Narrow(in_bytes));
    }
    static ORSKA_INLINE std::uint64_t GetCut(const char*) { return 0; }

    static ORSKA_INLINE std::uint64_t GetWhole(const char*, std::uint64_t in_size) {
        return in_size & ~std::uint64_t{3};
    }

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_bytes, std::uint64_t) {
        const __m512i codePoints = OrderUnits32<IS_BIG>(in_bytes);
        const __m512i surrogate = _mm512_and_si512(codePoints, All32<0xFFFFF800>());
        const __mmask16 isSurrogate = _mm512_cmpeq_epi32_mask(surrogate, All32<0xD800>());
        const __mmask16 isTooLarge = _mm512_cmpgt_epu32_mask(codePoints, All32<0x10FFFF>());
        if ((isSurrogate | isTooLarge) != 0) {
            return false;
        }
        char* to = io_cursor.m_to;
        PutCodePoints<true>(codePoints, 0xFFFF, to);
        io_cursor.m_from += WINDOW;
        io_cursor.m_to = to;
        return true;
    }

private:
    static ORSKA_INLINE __m128i Narrow(__m512i in_bytes) {
        return InRegister(
            _mm512_cvtepi32_epi8(IS_BIG ? _mm512_srli_epi32(in_bytes, 24) : in_bytes));
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
