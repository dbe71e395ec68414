// From UTF-16 with the instructions up to AVX-512 VBMI2.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF16_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF16_H

#include "PlatformAbstraction/ICU/Siconv/windows512/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

// The surrogates of a window, one bit a unit.
struct Surrogates {
    std::uint64_t m_lead;
    std::uint64_t m_trail;
    std::uint64_t m_inside;  // units of whole code points
};

// False when the units, up to the last code point that is whole, are not valid. What stands behind
// in_count of them, such as half a unit, does not count.
ORSKA_INLINE bool FindSurrogates(__m512i in_units, std::uint64_t in_count,
                                 Surrogates& out_surrogates) {
    const __m512i six = _mm512_and_si512(in_units, All16<0xFC00>());
    const std::uint64_t counted = GetLowBits(in_count);
    const std::uint64_t lead = _mm512_cmpeq_epi16_mask(six, All16<0xD800>()) & counted;
    const std::uint64_t trail = _mm512_cmpeq_epi16_mask(six, All16<0xDC00>()) & counted;
    // A lead at the end is left out. The place behind is looked at as well: that lead must not
    // stand where a trail is expected.
    const std::uint64_t cut = in_count == 0 ? 0 : lead >> (in_count - 1);
    const std::uint64_t inside = in_count - cut;
    out_surrogates = {lead, trail, inside};
    return (((lead << 1) ^ trail) & GetLowBits(inside + 1)) == 0;
}

// Whether a lead surrogate stands at an end of the text, as 2 bytes or none.
template <bool IS_BIG>
ORSKA_INLINE std::uint64_t GetCutUtf16(const char* in_from) {
    const auto high = static_cast<unsigned char>(in_from[WINDOW - (IS_BIG ? 2 : 1)]);
    return std::uint64_t{(high & 0xFC) == 0xD8} * 2;
}

// How many units the first in_codePoints code points have: each counts by its last unit.
ORSKA_INLINE std::uint64_t GetUnits(std::uint64_t in_lead, std::uint64_t in_codePoints) {
    return in_codePoints == 0 ? 0 : GetWidth(GetBit(~in_lead, in_codePoints - 1));
}

// Units up to FF, still in the order of the text, to bytes.
template <bool IS_BIG>
struct PlainUtf16 {
    static ORSKA_INLINE __m256i Narrow(__m512i in_bytes) {
        return InRegister(_mm512_cvtepi16_epi8(IS_BIG ? _mm512_srli_epi16(in_bytes, 8) : in_bytes));
    }
    static ORSKA_INLINE __m512i NarrowPair(__m512i in_first, __m512i in_second) {
        const __m512i first = IS_BIG ? _mm512_srli_epi16(in_first, 8) : in_first;
        const __m512i second = IS_BIG ? _mm512_srli_epi16(in_second, 8) : in_second;
        return _mm512_permutexvar_epi64(_mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0),
                                        _mm512_packus_epi16(first, second));
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
    static constexpr std::uint64_t SOURCE_UNIT = 2;
    static constexpr std::uint64_t TARGET_UNIT = 1;
    static constexpr std::uint64_t ROOM = 2 * WINDOW;

    static ORSKA_INLINE bool IsPlain(__m512i in_bytes) {
        return _mm512_test_epi16_mask(in_bytes, All16 < IS_BIG ? 0x80FF : 0xFF80 > ()) == 0;
    }
    static ORSKA_INLINE std::uint64_t GetCut(const char* in_from) {
        return GetCutUtf16<IS_BIG>(in_from);
    }

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_bytes,
                                          std::uint64_t in_cut) {
        const __m512i units = OrderUnits16<IS_BIG>(in_bytes);
        if (_mm512_test_epi16_mask(units, All16<0xF800>()) == 0) {
            Utf8Output<true> output(io_cursor.m_to, io_cursor.m_toEnd);
            PutUnits2(units, WINDOW / 2, output);
            io_cursor.m_from += WINDOW;
            io_cursor.m_to = output.GetTo();
            return true;
        }
        if (ConvertPairs(io_cursor, units)) {
            return true;
        }
        Surrogates surrogates;
        if (!FindSurrogates(units, WINDOW / 2, surrogates)) {
            return false;
        }
        Utf8Output<true> output(io_cursor.m_to, io_cursor.m_toEnd);
        Put(units, WINDOW / 2, surrogates, output);
        io_cursor.m_from += WINDOW - in_cut;
        io_cursor.m_to = output.GetTo();
        return true;
    }

    static ORSKA_INLINE bool ConvertPart(Cursor& io_cursor, __m512i in_bytes,
                                         std::uint64_t in_size) {
        const __m512i units = OrderUnits16<IS_BIG>(in_bytes);
        const std::uint64_t count = in_size / 2;
        Surrogates surrogates;
        if (!FindSurrogates(units, count, surrogates) || surrogates.m_inside == 0) {
            return false;
        }
        Utf8Output<false> output(io_cursor.m_to, io_cursor.m_toEnd);
        Put(units, count, surrogates, output);
        io_cursor.m_from +=
            2 * (output.IsFull() ? GetUnits(surrogates.m_lead, output.GetCodePoints())
                                 : surrogates.m_inside);
        io_cursor.m_to = output.GetTo();
        return !output.IsFull();
    }

private:
    template <bool IS_WHOLE>
    static ORSKA_INLINE void Put(__m512i in_units, std::uint64_t in_count,
                                 const Surrogates& in_surrogates, Utf8Output<IS_WHOLE>& io_output) {
        if (in_surrogates.m_lead == 0) {
            PutUnits(in_units, in_count, io_output);
            return;
        }
        // A trail surrogate's lane becomes the code point; a lead's has nothing.
        const std::uint64_t active = GetLowBits(in_count) & ~in_surrogates.m_lead;
        const __m512i zero = _mm512_setzero_si512();
        const __m512i before =
            _mm512_alignr_epi8(in_units, _mm512_alignr_epi32(in_units, zero, 12), 14);
        const auto trail = static_cast<__mmask32>(in_surrogates.m_trail);
        PutCodePoints<true>(
            Join(GetLowHalf(in_units), GetLowHalf(before), static_cast<__mmask16>(trail)), active,
            io_output);
        PutCodePoints<true>(
            Join(GetHighHalf(in_units), GetHighHalf(before), static_cast<__mmask16>(trail >> 16)),
            active >> 16, io_output);
    }

    // Sixteen units, and of those in in_trail and the ones before them the code point.
    static ORSKA_INLINE __m512i Join(__m256i in_units, __m256i in_before, __mmask16 in_trail) {
        const __m512i lead = _mm512_slli_epi32(_mm512_cvtepu16_epi32(in_before), 10);
        const __m512i unit = _mm512_cvtepu16_epi32(in_units);
        const __m512i sum = _mm512_mask_add_epi32(unit, in_trail, unit, lead);
        return _mm512_mask_sub_epi32(sum, in_trail, sum,
                                     All32<(0xD800U << 10) + 0xDC00U - 0x10000U>());
    }

    // Windows of nothing but surrogate pairs, each as long in UTF-8. False if there was none.
    static ORSKA_INLINE bool ConvertPairs(Cursor& io_cursor, __m512i in_units) {
        const char* const start = io_cursor.m_from;
        while (true) {
            const __m512i marks = _mm512_and_si512(in_units, All32<0xFC00FC00>());
            if (_mm512_cmpneq_epi32_mask(marks, All32<0xDC00D800>()) != 0) {
                break;
            }
            const __m512i lead = _mm512_slli_epi32(_mm512_and_si512(in_units, All32<0x3FF>()), 10);
            const __m512i trail = _mm512_srli_epi32(in_units, 16);
            // Bits of the trail below 10, of the lead above.
            const __m512i offsets = _mm512_ternarylogic_epi32(All32<0x3FF>(), trail, lead, 0xCA);
            const __m512i codePoints = _mm512_add_epi32(offsets, All32<0x10000>());
            const __m512i shifts = All64<0x20262C3200060C12>();
            const __m512i bits = _mm512_multishift_epi64_epi8(shifts, codePoints);
            _mm512_storeu_si512(
                io_cursor.m_to,
                _mm512_ternarylogic_epi32(bits, All32<0x3F3F3F3F>(), All32<0x808080F0>(), 0xEA));
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
    static constexpr std::uint64_t SOURCE_UNIT = 2;
    static constexpr std::uint64_t TARGET_UNIT = 1;
    static constexpr std::uint64_t ROOM = WINDOW / 2;

    static ORSKA_INLINE bool IsPlain(__m512i in_bytes) {
        return _mm512_test_epi16_mask(in_bytes, All16 < IS_BIG ? 0x00FF : 0xFF00 > ()) == 0;
    }
    static ORSKA_INLINE std::uint64_t GetCut(const char* in_from) {
        return GetCutUtf16<IS_BIG>(in_from);
    }

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_bytes,
                                          std::uint64_t in_cut) {
        const __m512i units = OrderUnits16<IS_BIG>(in_bytes);
        Surrogates surrogates;
        if (!FindSurrogates(units, WINDOW / 2, surrogates)) {
            return false;
        }
        const std::uint64_t active = GetLowBits(WINDOW / 2) & ~surrogates.m_lead;
        io_cursor.m_to += Put(io_cursor.m_to, units, active);
        io_cursor.m_from += WINDOW - in_cut;
        return true;
    }

    static ORSKA_INLINE bool ConvertPart(Cursor& io_cursor, __m512i in_bytes,
                                         std::uint64_t in_size) {
        const __m512i units = OrderUnits16<IS_BIG>(in_bytes);
        Surrogates surrogates;
        if (!FindSurrogates(units, in_size / 2, surrogates) || surrogates.m_inside == 0) {
            return false;
        }
        std::uint64_t inside = surrogates.m_inside;
        std::uint64_t active = GetLowBits(inside) & ~surrogates.m_lead;
        const bool isFull = CountBits(active) > io_cursor.GetRoom();
        if (isFull) {
            inside = GetUnits(surrogates.m_lead, io_cursor.GetRoom());
            active &= GetLowBits(inside);
        }
        io_cursor.m_to += Put(io_cursor.m_to, units, active);
        io_cursor.m_from += 2 * inside;
        return !isFull;
    }

private:
    // A code point above FF gives the substitute, a pair of surrogates by its trail.
    static ORSKA_INLINE std::uint64_t Put(char* out_to, __m512i in_units, std::uint64_t in_active) {
        const std::uint64_t written = CountBits(in_active);
        const __mmask32 isLarge = _mm512_test_epi16_mask(in_units, All16<0xFF00>());
        const __m256i bytes =
            _mm512_cvtepi16_epi8(_mm512_mask_mov_epi16(in_units, isLarge, All16<0x1A>()));
        _mm256_mask_storeu_epi8(
            out_to, static_cast<__mmask32>(GetLowBits(written)),
            _mm256_maskz_compress_epi8(static_cast<__mmask32>(in_active), bytes));
        return written;
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
