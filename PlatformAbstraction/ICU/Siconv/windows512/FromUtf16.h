// Converts UTF-16 with instructions up to AVX-512 VBMI2.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF16_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF16_H

#include "PlatformAbstraction/ICU/Siconv/windows512/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

// The surrogates of a window, with one bit for each unit. A lead at the end counts as cut off.
struct Surrogates {
    std::uint64_t m_lead;
    std::uint64_t m_trail;
};

// False when the units are not valid.
ORSKA_INLINE bool FindSurrogates(__m512i in_units, Surrogates& out_surrogates) {
    const __m512i six = _mm512_and_si512(in_units, All16<0xFC00>());
    const std::uint64_t lead = _mm512_cmpeq_epi16_mask(six, All16<0xD800>());
    const std::uint64_t trail = _mm512_cmpeq_epi16_mask(six, All16<0xDC00>());
    out_surrogates = {lead, trail};
    return ((lead << 1) & 0xFFFFFFFF) == trail;
}

// Narrows units up to FF, still in the text's byte order, to bytes.
template <bool IS_BIG>
struct PlainUtf16 {
    static constexpr std::uint64_t SOURCE_UNIT = 2;
    static constexpr std::uint64_t TARGET_UNIT = 1;

    // Returns 2 if the window ends with a lead surrogate, otherwise 0.
    static ORSKA_INLINE std::uint64_t GetCut(const char* in_from) {
        const auto high = static_cast<unsigned char>(in_from[WINDOW - (IS_BIG ? 2 : 1)]);
        return std::uint64_t{(high & 0xFC) == 0xD8} * 2;
    }
    static ORSKA_INLINE __m256i Narrow(__m512i in_bytes) {
        return InRegister(_mm512_cvtepi16_epi8(IS_BIG ? _mm512_srli_epi16(in_bytes, 8) : in_bytes));
    }
    static ORSKA_INLINE __m512i NarrowPair(__m512i in_first, __m512i in_second) {
        const __m512i first = IS_BIG ? _mm512_srli_epi16(in_first, 8) : in_first;
        const __m512i second = IS_BIG ? _mm512_srli_epi16(in_second, 8) : in_second;
        return _mm512_permutexvar_epi64(_mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0),
                                        _mm512_packus_epi16(first, second));
    }
    static ORSKA_INLINE std::uint64_t GetWhole(const char* in_from, std::uint64_t in_size) {
        return GetWholeUtf16<IS_BIG>(in_from, in_size);
    }
    static ORSKA_INLINE void WritePlain(char* out_to, __m512i in_bytes) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out_to), Narrow(in_bytes));
    }
    static ORSKA_INLINE void WritePlainPart(char* out_to, __m512i in_bytes, std::uint64_t in_size) {
        _mm256_mask_storeu_epi8(out_to, static_cast<__mmask32>(GetLowBits(in_size / 2)),
                                Narrow(in_bytes));
    }
};

template <bool IS_BIG>
class Utf16ToUtf8Windows : public PlainUtf16<IS_BIG> {
public:
    static constexpr std::uint64_t ROOM = 2 * WINDOW;

    static ORSKA_INLINE bool IsPlain(__m512i in_bytes) {
        return _mm512_test_epi16_mask(in_bytes, All16 < IS_BIG ? 0x80FF : 0xFF80 > ()) == 0;
    }

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_bytes,
                                          std::uint64_t in_cut) {
        const __m512i units = OrderUnits16<IS_BIG>(in_bytes);
        if (_mm512_test_epi16_mask(units, All16<0xF800>()) == 0) {
            char* to = io_cursor.m_to;
            PutUnits2(units, to);
            io_cursor.m_from += WINDOW;
            io_cursor.m_to = to;
            return true;
        }
        if (ConvertPairs(io_cursor, units)) {
            return true;
        }
        Surrogates surrogates;
        if (!FindSurrogates(units, surrogates)) {
            return false;
        }
        char* to = io_cursor.m_to;
        Put(units, surrogates, to);
        io_cursor.m_from += WINDOW - in_cut;
        io_cursor.m_to = to;
        return true;
    }
    static ORSKA_INLINE bool ConvertHalf(Cursor& io_cursor, __m512i in_bytes) {
        const __m512i units = OrderUnits16<IS_BIG>(in_bytes);
        char* to = io_cursor.m_to;
        Surrogates surrogates;
        if (_mm512_test_epi16_mask(units, All16<0xF800>()) == 0) {
            PutUnits2(units, to);
            io_cursor.m_from += WINDOW;
        } else if (FindSurrogates(units, surrogates)) {
            PutHalf<0>(units, surrogates, to);
            io_cursor.m_from += WINDOW / 2;
        } else {
            return false;
        }
        io_cursor.m_to = to;
        return true;
    }

private:
    static ORSKA_INLINE void Put(__m512i in_units, const Surrogates& in_surrogates, char*& io_to) {
        if (in_surrogates.m_lead == 0) {
            PutUnits(in_units, io_to);
            return;
        }
        PutHalf<0>(in_units, in_surrogates, io_to);
        PutHalf<1>(in_units, in_surrogates, io_to);
    }

    // The lane of a trail surrogate becomes the code point; the lane of a lead is dropped.
    template <int HALF>
    static ORSKA_INLINE void PutHalf(__m512i in_units, const Surrogates& in_surrogates,
                                     char*& io_to) {
        const __m512i zero = _mm512_setzero_si512();
        const __m512i before =
            _mm512_alignr_epi8(in_units, _mm512_alignr_epi32(in_units, zero, 12), 14);
        PutCodePoints<true>(
            Join(_mm512_extracti64x4_epi64(in_units, HALF), _mm512_extracti64x4_epi64(before, HALF),
                 static_cast<__mmask16>(in_surrogates.m_trail >> (16 * HALF))),
            static_cast<__mmask16>(~in_surrogates.m_lead >> (16 * HALF)), io_to);
    }

    // Sixteen units; those in in_trail are joined with the ones before them to code points.
    static ORSKA_INLINE __m512i Join(__m256i in_units, __m256i in_before, __mmask16 in_trail) {
        const __m512i lead = _mm512_slli_epi32(_mm512_cvtepu16_epi32(in_before), 10);
        const __m512i unit = _mm512_cvtepu16_epi32(in_units);
        const __m512i sum = _mm512_mask_add_epi32(unit, in_trail, unit, lead);
        return _mm512_mask_sub_epi32(sum, in_trail, sum,
                                     All32<(0xD800U << 10) + 0xDC00U - 0x10000U>());
    }

    // Converts windows of surrogate pairs only, which are as long in UTF-8. False if there
    // was none.
    static ORSKA_INLINE bool ConvertPairs(Cursor& io_cursor, __m512i in_units) {
        const char* const start = io_cursor.m_from;
        while (true) {
            const __m512i marks = _mm512_and_si512(in_units, All32<0xFC00FC00>());
            if (_mm512_cmpneq_epi32_mask(marks, All32<0xDC00D800>()) != 0) {
                break;
            }
            const __m512i lead = _mm512_slli_epi32(_mm512_and_si512(in_units, All32<0x3FF>()), 10);
            const __m512i trail = _mm512_srli_epi32(in_units, 16);
            // The lowest 10 bits are from the trail, those above from the lead.
            const __m512i offsets = _mm512_ternarylogic_epi32(All32<0x3FF>(), trail, lead, 0xCA);
            const __m512i codePoints = _mm512_add_epi32(offsets, All32<0x10000>());
            _mm512_storeu_si512(io_cursor.m_to, SpreadBits(codePoints, All32<0x808080F0>()));
            io_cursor.m_from += WINDOW;
            io_cursor.m_to += WINDOW;
            if (io_cursor.GetLeft() < WINDOW || io_cursor.GetRoom() < ROOM) {
                break;
            }
            in_units = OrderUnits16<IS_BIG>(LoadWindow(io_cursor.m_from));
        }
        return io_cursor.m_from != start;
    }
};

template <bool IS_BIG>
class Utf16ToSingleByteWindows : public PlainUtf16<IS_BIG> {
public:
    static constexpr std::uint64_t ROOM = WINDOW / 2;

    static ORSKA_INLINE bool IsPlain(__m512i in_bytes) {
        return _mm512_test_epi16_mask(in_bytes, All16 < IS_BIG ? 0x00FF : 0xFF00 > ()) == 0;
    }

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_bytes,
                                          std::uint64_t in_cut) {
        const __m512i units = OrderUnits16<IS_BIG>(in_bytes);
        Surrogates surrogates;
        if (!FindSurrogates(units, surrogates)) {
            return false;
        }
        // A code point above FF becomes the substitute; a surrogate pair does so by its trail.
        const auto active = static_cast<__mmask32>(~surrogates.m_lead);
        const __mmask32 isLarge = _mm512_test_epi16_mask(units, All16<0xFF00>());
        const __m256i bytes =
            _mm512_cvtepi16_epi8(_mm512_mask_mov_epi16(units, isLarge, All16<0x1A>()));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(io_cursor.m_to),
                            _mm256_maskz_compress_epi8(active, bytes));
        io_cursor.m_from += WINDOW - in_cut;
        io_cursor.m_to += CountBits(active);
        return true;
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
