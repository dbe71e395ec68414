// Converts UTF-8 with instructions up to AVX-512 VBMI2.
//
// Every byte of a window is handled as if it were the last one of its code point, with the bytes
// before it. Then the places that are not a last byte are dropped.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF8_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMUTF8_H

#include "PlatformAbstraction/ICU/Siconv/windows512/Driver.h"

namespace Orska::Support::Siconv {

namespace {

constexpr std::uint64_t FULL = ~std::uint64_t{0};

// Selects the bits of in_a that are set in BITS, and the others of in_b.
template <std::uint32_t BITS>
ORSKA_INLINE __m512i SelectBits(__m512i in_a, __m512i in_b) {
    return _mm512_ternarylogic_epi32(All8<BITS>(), in_a, in_b, 0xCA);
}

// The bytes COUNT places earlier, up to 16; zeros come in at the start.
template <int COUNT>
ORSKA_INLINE __m512i Earlier(__m512i in_bytes) {
    const __m512i before = _mm512_alignr_epi32(in_bytes, _mm512_setzero_si512(), 12);
    return _mm512_alignr_epi8(in_bytes, before, 16 - COUNT);
}

// The code points of a window, at the place of their last byte. For UTF-16 the third of four bytes
// has the lead surrogate.
struct CodePoints {
    __m512i m_low;         // bits 0 to 7
    __m512i m_high;        // bits 8 to 15
    __m512i m_top;         // bits 16 to 20, if m_hasTop
    bool m_hasTop;         // some have four bytes
    std::uint64_t m_keep;  // the places to keep
};

// Converts a window without sequences of three or four bytes: compresses the last bytes of the code
// points and their leads separately and joins them to units. False for other windows and if it is
// not valid. Writes as much as 64 units take.
template <class Target>
ORSKA_INLINE bool ConvertShortWindow(Cursor& io_cursor, __m512i in_at, std::uint64_t in_cut) {
    if (_mm512_cmpge_epu8_mask(in_at, All8<0xE0>()) != 0) {
        return false;
    }
    const std::uint64_t lead = _mm512_cmpge_epu8_mask(in_at, All8<0xC0>());
    const std::uint64_t isOverlong2 = _mm512_mask_cmplt_epu8_mask(lead, in_at, All8<0xC2>());
    const std::uint64_t follower = _mm512_movepi8_mask(in_at) & ~lead;
    if (((follower ^ lead << 1) | isOverlong2) != 0) {
        return false;
    }
    __m512i units[2];
    const __m512i lasts = _mm512_mask_add_epi8(in_at, follower, in_at, All8<0x80>());
    const __m512i leads = _mm512_maskz_add_epi8(lead, in_at, All8<0x40>());
    InterleaveText(_mm512_maskz_compress_epi8(~lead, lasts),
                   _mm512_maskz_compress_epi8(~follower, leads), units);
    for (__m512i& unit : units) {
        unit = _mm512_maddubs_epi16(unit, All16<0x4001>());
    }
    Target::WriteUnits(io_cursor.m_to, units);
    io_cursor.m_from += WINDOW - in_cut;
    io_cursor.m_to += CountBits(~lead) * Target::UNIT;
    return true;
}

template <bool IS_BIG>
struct WindowUnitsOf16 {
    static constexpr std::uint32_t UNIT = 2;
    static constexpr std::uint32_t PARTS = 2;
    static constexpr bool KEEPS_THIRD = true;
    static constexpr bool HAS_RUNS = true;

    static ORSKA_INLINE void WidenPlain(__m512i in_bytes, __m512i (&out_parts)[PARTS]) {
        Widen16<IS_BIG>(in_bytes, out_parts);
    }
    static ORSKA_INLINE void Gather(const CodePoints& in_text, __m512i (&out_parts)[PARTS]) {
        const __m512i low = _mm512_maskz_compress_epi8(in_text.m_keep, in_text.m_low);
        const __m512i high = _mm512_maskz_compress_epi8(in_text.m_keep, in_text.m_high);
        if (IS_BIG) {
            InterleaveText(high, low, out_parts);
        } else {
            InterleaveText(low, high, out_parts);
        }
    }
    static ORSKA_INLINE bool ConvertShort(Cursor& io_cursor, __m512i in_at, std::uint64_t in_cut) {
        return ConvertShortWindow<WindowUnitsOf16>(io_cursor, in_at, in_cut);
    }
    static ORSKA_INLINE void WriteUnits(char* out_at, const __m512i (&in_units)[2]) {
        _mm512_storeu_si512(out_at, OrderUnits16<IS_BIG>(in_units[0]));
        _mm512_storeu_si512(out_at + WINDOW, OrderUnits16<IS_BIG>(in_units[1]));
    }
    // in_plane: bits 16 to 20, minus 1, where in_third is set.
    static ORSKA_INLINE void SetLong(__m512i in_at, __m512i in_1, __m512i, __m512i in_plane,
                                     std::uint64_t in_third, std::uint64_t in_fourth,
                                     CodePoints& io_text) {
        const __m512i leadHigh = _mm512_or_si512(
            All8<0xD8>(), _mm512_and_si512(_mm512_srli_epi16(in_plane, 2), All8<3>()));
        const __m512i leadLow = SelectBits<0xC0>(
            _mm512_slli_epi16(in_plane, 6),
            SelectBits<0x3C>(_mm512_slli_epi16(in_1, 2),
                             _mm512_and_si512(_mm512_srli_epi16(in_at, 4), All8<3>())));
        const __m512i trailHigh = SelectBits<0xFC>(All8<0xDC>(), io_text.m_high);
        const __m512i high = _mm512_mask_mov_epi8(io_text.m_high, in_third, leadHigh);
        io_text.m_high = _mm512_mask_mov_epi8(high, in_fourth, trailHigh);
        io_text.m_low = _mm512_mask_mov_epi8(io_text.m_low, in_third, leadLow);
    }
    // Writes code points of three bytes from lanes of 32 bits, in 32 bytes.
    static ORSKA_INLINE void WriteRun3(char* out_at, __m512i in_codePoints) {
        const __m512i units = OrderUnits16<IS_BIG>(in_codePoints);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out_at), _mm512_cvtepi32_epi16(units));
    }
    // Writes code points minus 10000 from lanes of 32 bits, in 64 bytes.
    static ORSKA_INLINE void WriteRun4(char* out_at, __m512i in_offsets) {
        const __m512i trail = _mm512_slli_epi32(in_offsets, 16);
        const __m512i lead = _mm512_srli_epi32(in_offsets, 10);
        const __m512i bits = _mm512_ternarylogic_epi32(All32<0x03FF0000>(), trail, lead, 0xCA);
        const __m512i pair = _mm512_or_si512(bits, All32<0xDC00D800>());
        _mm512_storeu_si512(out_at, OrderUnits16<IS_BIG>(pair));
    }
};

// The common part of the targets whose code points are one unit.
struct ToWholeCodePoints {
    static constexpr bool KEEPS_THIRD = false;

    // in_2: two bytes earlier; in_plane: see above.
    static ORSKA_INLINE void SetLong(__m512i, __m512i, __m512i in_2, __m512i in_plane,
                                     std::uint64_t, std::uint64_t in_fourth, CodePoints& io_text) {
        io_text.m_high =
            _mm512_mask_mov_epi8(io_text.m_high, in_fourth,
                                 SelectBits<0xF0>(_mm512_slli_epi16(in_2, 4), io_text.m_high));
        io_text.m_top =
            _mm512_maskz_mov_epi8(in_fourth, _mm512_add_epi8(Earlier<1>(in_plane), All8<1>()));
    }
};

template <bool IS_BIG>
struct WindowUnitsOf32 : ToWholeCodePoints {
    static constexpr std::uint32_t UNIT = 4;
    static constexpr std::uint32_t PARTS = 4;
    static constexpr bool HAS_RUNS = true;

    static ORSKA_INLINE void WidenPlain(__m512i in_bytes, __m512i (&out_parts)[PARTS]) {
        Widen32<IS_BIG>(in_bytes, out_parts);
    }
    static ORSKA_INLINE void Gather(const CodePoints& in_text, __m512i (&out_parts)[PARTS]) {
        __m512i units[2];
        InterleaveText(_mm512_maskz_compress_epi8(in_text.m_keep, in_text.m_low),
                       _mm512_maskz_compress_epi8(in_text.m_keep, in_text.m_high), units);
        __m512i tops[4];
        if (in_text.m_hasTop) {
            Widen32<false>(_mm512_maskz_compress_epi8(in_text.m_keep, in_text.m_top), tops);
        }
        for (std::uint32_t i = 0; i < PARTS; ++i) {
            const __m512i pair = units[i / 2];
            __m512i whole =
                _mm512_cvtepu16_epi32(i % 2 == 0 ? GetLowHalf(pair) : GetHighHalf(pair));
            if (in_text.m_hasTop) {
                whole = _mm512_or_si512(whole, _mm512_slli_epi32(tops[i], 16));
            }
            out_parts[i] = OrderUnits32<IS_BIG>(whole);
        }
    }
    static ORSKA_INLINE bool ConvertShort(Cursor& io_cursor, __m512i in_at, std::uint64_t in_cut) {
        return ConvertShortWindow<WindowUnitsOf32>(io_cursor, in_at, in_cut);
    }
    static ORSKA_INLINE void WriteUnits(char* out_at, const __m512i (&in_units)[2]) {
        for (std::uint32_t i = 0; i < PARTS; ++i) {
            const __m512i pair = in_units[i / 2];
            const __m256i half = i % 2 == 0 ? GetLowHalf(pair) : GetHighHalf(pair);
            _mm512_storeu_si512(out_at + i * WINDOW,
                                OrderUnits32<IS_BIG>(_mm512_cvtepu16_epi32(half)));
        }
    }
    static ORSKA_INLINE void WriteRun3(char* out_at, __m512i in_codePoints) {
        _mm512_storeu_si512(out_at, OrderUnits32<IS_BIG>(in_codePoints));
    }
    static ORSKA_INLINE void WriteRun4(char* out_at, __m512i in_offsets) {
        const __m512i codePoints = _mm512_add_epi32(in_offsets, All32<0x10000>());
        _mm512_storeu_si512(out_at, OrderUnits32<IS_BIG>(codePoints));
    }
};

struct WindowUnitsOf8 : ToWholeCodePoints {
    static constexpr std::uint32_t UNIT = 1;
    static constexpr std::uint32_t PARTS = 1;
    static constexpr bool HAS_RUNS = false;

    static ORSKA_INLINE void WidenPlain(__m512i in_bytes, __m512i (&out_parts)[PARTS]) {
        out_parts[0] = in_bytes;
    }
    static ORSKA_INLINE void Gather(const CodePoints& in_text, __m512i (&out_parts)[PARTS]) {
        const __m512i above =
            in_text.m_hasTop ? _mm512_or_si512(in_text.m_high, in_text.m_top) : in_text.m_high;
        const std::uint64_t isLarge = _mm512_test_epi8_mask(above, above);
        const __m512i bytes = _mm512_mask_mov_epi8(in_text.m_low, isLarge, All8<0x1A>());
        out_parts[0] = _mm512_maskz_compress_epi8(in_text.m_keep, bytes);
    }
    // Converts code points up to FF: sets bit 6 of a follower after C3. Goes on by whole windows
    // and passes the last byte from one to the next, so that the place of a window does not depend
    // on the one before.
    static ORSKA_INLINE bool ConvertShort(Cursor& io_cursor, __m512i in_at, std::uint64_t) {
        if (_mm512_cmpgt_epu8_mask(in_at, All8<0xC3>()) != 0) {
            return false;
        }
        const char* from = io_cursor.m_from;
        char* to = io_cursor.m_to;
        std::uint64_t afterLead = 0;
        std::uint64_t afterC3 = 0;
        while (true) {
            const std::uint64_t lead = _mm512_cmpge_epu8_mask(in_at, All8<0xC0>());
            const std::uint64_t isC2 = _mm512_cmpeq_epi8_mask(in_at, All8<0xC2>());
            const std::uint64_t isC3 = _mm512_cmpeq_epi8_mask(in_at, All8<0xC3>());
            const std::uint64_t follower = _mm512_movepi8_mask(in_at) & ~lead;
            if (((follower ^ (lead << 1 | afterLead)) | (lead ^ isC2 ^ isC3)) != 0) {
                break;
            }
            const __m512i bytes =
                _mm512_mask_add_epi8(in_at, isC3 << 1 | afterC3, in_at, All8<0x40>());
            _mm512_storeu_si512(to, _mm512_maskz_compress_epi8(~lead, bytes));
            from += WINDOW;
            to += CountBits(~lead);
            afterLead = lead >> 63;
            afterC3 = isC3 >> 63;
            if (io_cursor.m_fromEnd - from < static_cast<std::int64_t>(WINDOW) ||
                io_cursor.m_toEnd - to < static_cast<std::int64_t>(WINDOW)) {
                break;
            }
            in_at = LoadWindow(from);
        }
        from -= afterLead;
        const bool isDone = from != io_cursor.m_from;
        io_cursor.m_from = from;
        io_cursor.m_to = to;
        return isDone;
    }
};

template <class Target>
class Utf8Windows {
public:
    static constexpr std::uint64_t SOURCE_UNIT = 1;
    static constexpr std::uint64_t TARGET_UNIT = Target::UNIT;
    static constexpr std::uint64_t ROOM = WINDOW * Target::UNIT;

    static ORSKA_INLINE bool IsPlain(__m512i in_bytes) {
        return _mm512_movepi8_mask(in_bytes) == 0;
    }
    static ORSKA_INLINE void WritePlain(char* out_to, __m512i in_bytes) {
        __m512i parts[Target::PARTS];
        Target::WidenPlain(in_bytes, parts);
        StoreWhole(out_to, parts);
    }
    static ORSKA_INLINE void WritePlainPart(char* out_to, __m512i in_bytes, std::uint64_t in_size) {
        __m512i parts[Target::PARTS];
        Target::WidenPlain(in_bytes, parts);
        StoreUnits(out_to, parts, in_size);
    }

    // Reads only the last three bytes, so that the next window does not wait for the masks. At most
    // one of the comparisons is true in valid text.
    static ORSKA_INLINE std::uint64_t GetCut(const char* in_from) {
        const auto isFrom = [in_from](std::uint64_t in_at, unsigned char in_least) {
            return std::uint64_t{static_cast<unsigned char>(in_from[in_at]) >= in_least};
        };
        std::uint64_t cut = isFrom(63, 0xC0) | isFrom(62, 0xE0) << 1 | isFrom(61, 0xF0) * 3;
        __asm__("" : "+r"(cut));  // gcc would use branches, which are hard to predict
        return cut;
    }

    static ORSKA_INLINE std::uint64_t GetWhole(const char* in_from, std::uint64_t in_size) {
        return in_size - GetCutBytes(in_from, in_from + in_size);
    }

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_at, std::uint64_t in_cut) {
        if (Target::ConvertShort(io_cursor, in_at, in_cut)) {
            return true;
        }
        if constexpr (Target::HAS_RUNS) {
            if (ConvertRun(io_cursor, in_at)) {
                return true;
            }
        }
        CodePoints text;
        if (!Read(in_at, text)) {
            return false;
        }
        text.m_keep &= GetLowBits(WINDOW - in_cut);
        __m512i parts[Target::PARTS];
        Target::Gather(text, parts);
        StoreWhole(io_cursor.m_to, parts);
        io_cursor.m_from += WINDOW - in_cut;
        io_cursor.m_to += CountBits(text.m_keep) * Target::UNIT;
        return true;
    }

private:
    // False when the window is not valid; its last code point may be cut.
    static ORSKA_INLINE bool Read(__m512i in_at, CodePoints& out_text) {
        const std::uint64_t notAscii = _mm512_movepi8_mask(in_at);
        const std::uint64_t lead = _mm512_cmpge_epu8_mask(in_at, All8<0xC0>());
        const std::uint64_t lead3 = _mm512_cmpge_epu8_mask(in_at, All8<0xE0>());
        const std::uint64_t lead4 = _mm512_cmpge_epu8_mask(in_at, All8<0xF0>());
        const std::uint64_t isOverlong2 = _mm512_mask_cmplt_epu8_mask(lead, in_at, All8<0xC2>());
        const std::uint64_t ends3 = (lead3 & ~lead4) << 2;
        const __m512i before1 = Earlier<1>(in_at);
        const __m512i before2 = Earlier<2>(in_at);
        const __m512i follower = SelectBits<0xC0>(_mm512_slli_epi16(before1, 6), in_at);
        const __m512i high = _mm512_maskz_mov_epi8(
            notAscii, _mm512_and_si512(_mm512_srli_epi16(before1, 2), All8<0x0F>()));
        out_text.m_low = _mm512_mask_mov_epi8(in_at, notAscii, follower);
        out_text.m_high = _mm512_mask_mov_epi8(
            high, ends3, SelectBits<0xF0>(_mm512_slli_epi16(before2, 4), high));
        out_text.m_top = _mm512_setzero_si512();
        out_text.m_hasTop = lead4 != 0;
        out_text.m_keep = ~(lead | lead3 << 1);
        const __m512i five = _mm512_and_si512(out_text.m_high, All8<0xF8>());
        const std::uint64_t isOverlong3 = _mm512_mask_testn_epi8_mask(ends3, five, five);
        const std::uint64_t isSurrogate = _mm512_mask_cmpeq_epi8_mask(ends3, five, All8<0xD8>());
        // The places where a follower is unexpected or missing.
        const std::uint64_t unexplained = (notAscii & ~lead) ^ lead << 1 ^ lead3 << 2 ^ lead4 << 3;
        std::uint64_t wrong = unexplained | isOverlong2 | isOverlong3 | isSurrogate;
        if (lead4 != 0) {
            // Bits 16 to 20, which must be 1 to 16.
            const __m512i bits =
                SelectBits<0x1C>(_mm512_slli_epi16(before2, 2),
                                 _mm512_and_si512(_mm512_srli_epi16(before1, 4), All8<3>()));
            const __m512i plane = _mm512_add_epi8(bits, All8<0xFF>());
            const std::uint64_t third = lead4 << 2;
            wrong |= _mm512_mask_test_epi8_mask(third, plane, All8<0xF0>()) |
                     _mm512_cmpge_epu8_mask(in_at, All8<0xF5>());
            Target::SetLong(in_at, before1, before2, plane, third, lead4 << 3, out_text);
            out_text.m_keep &= Target::KEEPS_THIRD ? FULL : ~third;
        }
        return wrong == 0;
    }

    // Converts whole windows of sequences of three bytes only, or of four, from the start of one
    // on. False when no such run starts here.
    static ORSKA_INLINE bool ConvertRun(Cursor& io_cursor, __m512i in_at) {
        const char* const start = io_cursor.m_from;
        const auto first = static_cast<unsigned char>(*start);
        if (first >= 0xF0) {
            ConvertRun4(io_cursor, in_at);
        } else if (first >= 0xE0 && io_cursor.GetLeft() > WINDOW) {
            ConvertRun3(io_cursor, in_at);
        }
        return io_cursor.m_from != start;
    }

    // Converts 48 bytes of a window at a time. A single window takes less time as a whole.
    static ORSKA_INLINE void ConvertRun3(Cursor& io_cursor, __m512i in_at) {
        const __m512i order =
            _mm512_set_epi32(0x002D2E2F, 0x002A2B2C, 0x00272829, 0x00242526, 0x00212223, 0x001E1F20,
                             0x001B1C1D, 0x0018191A, 0x00151617, 0x00121314, 0x000F1011, 0x000C0D0E,
                             0x00090A0B, 0x00060708, 0x00030405, 0x00000102);
        while (true) {
            const __m512i lanes = _mm512_permutexvar_epi8(order, in_at);
            const __m512i marks = _mm512_and_si512(lanes, All32<0x00F0C0C0>());
            const __m512i bits = _mm512_and_si512(lanes, All32<0x000F3F3F>());
            const __m512i halves = _mm512_maddubs_epi16(bits, All32<0x00014001>());
            const __m512i codePoints = _mm512_madd_epi16(halves, All32<0x10000001>());
            const __m512i five = _mm512_and_si512(codePoints, All32<0xF800>());
            const __mmask16 isGood = _mm512_mask_cmpneq_epi32_mask(
                _mm512_mask_cmpeq_epi32_mask(_mm512_test_epi32_mask(five, five), marks,
                                             All32<0x00E08080>()),
                five, All32<0xD800>());
            if (isGood != 0xFFFF) {
                return;
            }
            Target::WriteRun3(io_cursor.m_to, codePoints);
            io_cursor.m_from += 48;
            io_cursor.m_to += 16 * Target::UNIT;
            if (io_cursor.GetLeft() < WINDOW || io_cursor.GetRoom() < 16 * Target::UNIT) {
                return;
            }
            in_at = LoadWindow(io_cursor.m_from);
        }
    }

    static ORSKA_INLINE void ConvertRun4(Cursor& io_cursor, __m512i in_at) {
        while (true) {
            const __m512i marks = _mm512_and_si512(in_at, All32<0xC0C0C0F8>());
            const __m512i bits = _mm512_and_si512(in_at, All32<0x3F3F3F07>());
            const __m512i halves = _mm512_maddubs_epi16(bits, All32<0x01400140>());
            const __m512i codePoints = _mm512_madd_epi16(halves, All32<0x00011000>());
            const __m512i offsets = _mm512_sub_epi32(codePoints, All32<0x10000>());
            const __mmask16 isGood = _mm512_mask_cmplt_epu32_mask(
                _mm512_cmpeq_epi32_mask(marks, All32<0x808080F0>()), offsets, All32<0x100000>());
            if (isGood != 0xFFFF) {
                return;
            }
            Target::WriteRun4(io_cursor.m_to, offsets);
            io_cursor.m_from += WINDOW;
            io_cursor.m_to += WINDOW;
            if (io_cursor.GetLeft() < WINDOW || io_cursor.GetRoom() < WINDOW) {
                return;
            }
            in_at = LoadWindow(io_cursor.m_from);
        }
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
