// The loops over a text with AVX-512: windows of 64 bytes that each begin at a code point, so that
// no window depends on the one before. They convert whole windows while the target has room for all
// that one may write; the last one has zeros after the text, and goes through a buffer if there is
// less room. The level below handles the rest: text that does not fit, is malformed or is cut off.
// Included by kernels only; everything is local to the including file.
//
// A class of windows has
// - SOURCE_UNIT, the bytes of a code unit; TARGET_UNIT, those of a plain character;
// - ROOM, the most bytes written for a window, scratch after the text included;
// - IsPlain(bytes), whether the characters need no more than other units (at least ASCII is so),
//   WritePlain(to, bytes) for 64 of them and WritePlainPart(to, bytes, size);
// - NarrowPair(bytes, bytes), which narrows two plain windows to one vector, if units have 2 bytes;
// - GetCut(from), the bytes at the end of a valid window of a code point that continues after it;
// - GetWhole(from, size), the size of the whole code points of a piece, if it is valid;
// - ConvertWhole(cursor, bytes, cut), false with nothing changed when the window is not valid;
// - perhaps ConvertHalf(cursor, bytes), the same if only the first half is text.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_DRIVER_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_DRIVER_H

#include <immintrin.h>

#include "PlatformAbstraction/ICU/Siconv/blocks/Driver.h"

namespace Orska::Support::Siconv {

namespace {

constexpr std::uint64_t WINDOW = 64;

// A number in every lane. gcc would rebuild it at each use from a general register, which occupies
// the shuffle unit. Inline assembly that loads it prevents that.
template <class Word, Word VALUE>
constexpr Word NUMBER = VALUE;
template <std::uint32_t VALUE>
ORSKA_INLINE __m512i All32() {
    __m512i lanes;
    __asm__("vpbroadcastd %1, %0" : "=v"(lanes) : "m"(NUMBER<std::uint32_t, VALUE>));
    return lanes;
}
template <std::uint64_t VALUE>
ORSKA_INLINE __m512i All64() {
    __m512i lanes;
    __asm__("vpbroadcastq %1, %0" : "=v"(lanes) : "m"(NUMBER<std::uint64_t, VALUE>));
    return lanes;
}
template <std::uint32_t VALUE>
ORSKA_INLINE __m512i All16() {
    return All32<VALUE * 0x00010001U>();
}
template <std::uint32_t VALUE>
ORSKA_INLINE __m512i All8() {
    return All32<VALUE * 0x01010101U>();
}

// Returns the lowest in_count bits, all of them from 64 on. in_count must be below 256: the
// processor reads its lowest byte only.
ORSKA_INLINE std::uint64_t GetLowBits(std::uint64_t in_count) {
    return _bzhi_u64(~std::uint64_t{0}, in_count);
}
ORSKA_INLINE std::uint64_t CountBits(std::uint64_t in_mask) {
    return static_cast<std::uint64_t>(__builtin_popcountll(in_mask));
}
ORSKA_INLINE __m512i LoadWindow(const char* in_at) { return _mm512_loadu_si512(in_at); }
// Loads the first in_size bytes, whole units, with zeros after them; reads no others. A mask of
// units serves a store of as many bytes too.
template <std::uint64_t UNIT = 1>
ORSKA_INLINE __m512i LoadWindowPart(const char* in_at, std::uint64_t in_size) {
    const std::uint64_t mask = GetLowBits(in_size / UNIT);
    if constexpr (UNIT == 4) {
        return _mm512_maskz_loadu_epi32(static_cast<__mmask16>(mask), in_at);
    } else if constexpr (UNIT == 2) {
        return _mm512_maskz_loadu_epi16(static_cast<__mmask32>(mask), in_at);
    } else {
        return _mm512_maskz_loadu_epi8(mask, in_at);
    }
}
// Writes only the first in_size bytes, at most 64.
ORSKA_INLINE void StorePart(char* out_at, __m512i in_bytes, std::uint64_t in_size) {
    _mm512_mask_storeu_epi8(out_at, GetLowBits(in_size), in_bytes);
}
// Writes the first in_count units of UNIT vectors one after the other, with units of UNIT bytes.
template <std::uint32_t UNIT>
ORSKA_INLINE void StoreUnits(char* out_at, const __m512i (&in_parts)[UNIT],
                             std::uint64_t in_count) {
    constexpr std::uint64_t STEP = WINDOW / UNIT;
    const std::uint64_t units = GetLowBits(in_count);
    for (std::uint32_t i = 0; i < UNIT && in_count > i * STEP; ++i) {
        const std::uint64_t mask = units >> (i * STEP);
        if constexpr (UNIT == 4) {
            _mm512_mask_storeu_epi32(out_at + i * WINDOW, static_cast<__mmask16>(mask),
                                     in_parts[i]);
        } else if constexpr (UNIT == 2) {
            _mm512_mask_storeu_epi16(out_at + i * WINDOW, static_cast<__mmask32>(mask),
                                     in_parts[i]);
        } else {
            _mm512_mask_storeu_epi8(out_at, mask, in_parts[i]);
        }
    }
}
template <std::uint32_t COUNT>
ORSKA_INLINE void StoreWhole(char* out_at, const __m512i (&in_parts)[COUNT]) {
    for (std::uint32_t i = 0; i < COUNT; ++i) {
        _mm512_storeu_si512(out_at + i * WINDOW, in_parts[i]);
    }
}

ORSKA_INLINE __m256i GetLowHalf(__m512i in_value) { return _mm512_castsi512_si256(in_value); }
ORSKA_INLINE __m256i GetHighHalf(__m512i in_value) {
    return _mm512_extracti64x4_epi64(in_value, 1);
}

// Stops gcc from narrowing to memory in one instruction, which is slower than two.
template <class Vector>
ORSKA_INLINE Vector InRegister(Vector in_value) {
    __asm__("" : "+v"(in_value));
    return in_value;
}

// Changes units from the text's byte order to the processor's, or back.
template <bool IS_BIG>
ORSKA_INLINE __m512i OrderUnits16(__m512i in_units) {
    return IS_BIG ? _mm512_shldi_epi16(in_units, in_units, 8) : in_units;
}
template <bool IS_BIG>
ORSKA_INLINE __m512i OrderUnits32(__m512i in_units) {
    const __m512i order = _mm512_set4_epi32(0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203);
    return IS_BIG ? _mm512_shuffle_epi8(in_units, order) : in_units;
}

// Interleaves two vectors, so that the bytes of each unit are side by side.
ORSKA_INLINE void InterleaveText(__m512i in_first, __m512i in_second, __m512i (&out_units)[2]) {
    const __m512i order = _mm512_set_epi64(7, 3, 6, 2, 5, 1, 4, 0);
    const __m512i first = _mm512_permutexvar_epi64(order, in_first);
    const __m512i second = _mm512_permutexvar_epi64(order, in_second);
    out_units[0] = _mm512_unpacklo_epi8(first, second);
    out_units[1] = _mm512_unpackhi_epi8(first, second);
}

// Widens 64 bytes to units of 16 bits.
template <bool IS_BIG>
ORSKA_INLINE void Widen16(__m512i in_bytes, __m512i (&out_units)[2]) {
    const __m512i low = _mm512_cvtepu8_epi16(GetLowHalf(in_bytes));
    const __m512i high = _mm512_cvtepu8_epi16(GetHighHalf(in_bytes));
    out_units[0] = IS_BIG ? _mm512_slli_epi16(low, 8) : low;
    out_units[1] = IS_BIG ? _mm512_slli_epi16(high, 8) : high;
}
// Widens 64 bytes to units of 32 bits.
template <bool IS_BIG>
ORSKA_INLINE void Widen32(__m512i in_bytes, __m512i (&out_units)[4]) {
    const __m128i quarters[4] = {
        _mm512_castsi512_si128(in_bytes), _mm512_extracti32x4_epi32(in_bytes, 1),
        _mm512_extracti32x4_epi32(in_bytes, 2), _mm512_extracti32x4_epi32(in_bytes, 3)};
    for (std::uint32_t i = 0; i < 4; ++i) {
        const __m512i units = _mm512_cvtepu8_epi32(quarters[i]);
        out_units[i] = IS_BIG ? _mm512_slli_epi32(units, 24) : units;
    }
}

// Converts two windows at a time while they are plain, if a class can write two at once.
template <class Windows>
ORSKA_INLINE void ConvertPlainPairs(Cursor& io_cursor) {
    while (io_cursor.GetLeft() >= 2 * WINDOW && io_cursor.GetRoom() >= WINDOW) {
        PrefetchTarget<WINDOW>(io_cursor.m_to);
        const __m512i first = LoadWindow(io_cursor.m_from);
        const __m512i second = LoadWindow(io_cursor.m_from + WINDOW);
        if (!Windows::IsPlain(_mm512_or_si512(first, second))) {
            return;
        }
        _mm512_storeu_si512(io_cursor.m_to, Windows::NarrowPair(first, second));
        io_cursor.m_from += 2 * WINDOW;
        io_cursor.m_to += WINDOW;
    }
}

template <class Windows>
ORSKA_INLINE void ConvertWholeWindows(Cursor& io_cursor) {
    if constexpr (Windows::SOURCE_UNIT == 2) {
        ConvertPlainPairs<Windows>(io_cursor);
    }
    while (io_cursor.GetLeft() >= WINDOW && io_cursor.GetRoom() >= Windows::ROOM) {
        const __m512i bytes = LoadWindow(io_cursor.m_from);
        if (Windows::IsPlain(bytes)) {
            PrefetchTarget<WINDOW / Windows::SOURCE_UNIT * Windows::TARGET_UNIT>(io_cursor.m_to);
            Windows::WritePlain(io_cursor.m_to, bytes);
            io_cursor.m_from += WINDOW;
            io_cursor.m_to += WINDOW / Windows::SOURCE_UNIT * Windows::TARGET_UNIT;
            if constexpr (Windows::SOURCE_UNIT == 2) {
                ConvertPlainPairs<Windows>(io_cursor);
            }
        } else if (!Windows::ConvertWhole(io_cursor, bytes, Windows::GetCut(io_cursor.m_from))) {
            return;
        }
    }
}

// Converts a window that has zeros after in_size bytes.
template <class Windows>
ORSKA_INLINE bool ConvertPadded(Cursor& io_cursor, __m512i in_bytes, std::uint64_t in_size) {
    if constexpr (requires { Windows::ConvertHalf(io_cursor, in_bytes); }) {
        if (in_size <= WINDOW / 2) {
            return Windows::ConvertHalf(io_cursor, in_bytes);
        }
    }
    return Windows::ConvertWhole(io_cursor, in_bytes, 0);
}

// Takes back what the zeros after a text have written.
template <class Windows>
ORSKA_INLINE void TakeBackPadding(Cursor& io_cursor, const char* in_end) {
    if (io_cursor.m_from > in_end) {
        const auto excess = static_cast<std::uint64_t>(io_cursor.m_from - in_end);
        io_cursor.m_from = in_end;
        io_cursor.m_to -= excess / Windows::SOURCE_UNIT * Windows::TARGET_UNIT;
    }
}

// Converts a window if there is room for one. At the end of the text it has whole code points with
// zeros after them; each zero writes one more plain character. False with nothing changed if it is
// not valid or there is none.
template <class Windows>
ORSKA_INLINE bool ConvertWindow(Cursor& io_cursor) {
    const char* const from = io_cursor.m_from;
    const std::uint64_t left = io_cursor.GetLeft();
    if (left >= WINDOW) {
        return Windows::ConvertWhole(io_cursor, LoadWindow(from), Windows::GetCut(from));
    }
    const std::uint64_t size = Windows::GetWhole(from, left);
    const __m512i bytes = LoadWindowPart(from, size);
    if (size > 0 && Windows::IsPlain(bytes)) {
        Windows::WritePlainPart(io_cursor.m_to, bytes, size);
        io_cursor.m_from += size;
        io_cursor.m_to += size / Windows::SOURCE_UNIT * Windows::TARGET_UNIT;
        return true;
    }
    if (size == 0 || !ConvertPadded<Windows>(io_cursor, bytes, size)) {
        return false;
    }
    TakeBackPadding<Windows>(io_cursor, from + size);
    return true;
}

// Converts a window when there may be no room for scratch. False with nothing changed if there is
// none for its text either.
template <class Windows>
ORSKA_INLINE bool ConvertTightWindow(Cursor& io_cursor) {
    char target[Windows::ROOM];
    Cursor cursor{io_cursor.m_from, io_cursor.m_fromEnd, target, target + sizeof target};
    if (!ConvertWindow<Windows>(cursor)) {
        return false;
    }
    const auto written = static_cast<std::uint64_t>(cursor.m_to - target);
    if (written > io_cursor.GetRoom()) {
        return false;
    }
    for (std::uint64_t at = 0; at < written; at += WINDOW) {
        const std::uint64_t part = written - at < WINDOW ? written - at : WINDOW;
        StorePart(io_cursor.m_to + at, LoadWindowPart(target + at, part), part);
    }
    io_cursor.m_from = cursor.m_from;
    io_cursor.m_to += written;
    return true;
}

template <int SOURCE, int TARGET, class Windows>
__attribute__((noinline)) std::int32_t ConvertWindows(TranscoderSource& io_source,
                                                      TranscoderTarget& io_target) {
    Cursor cursor = MakeCursor(io_source, io_target);
    ConvertWholeWindows<Windows>(cursor);
    while (cursor.m_from != cursor.m_fromEnd &&
           (cursor.GetRoom() >= Windows::ROOM ? ConvertWindow<Windows>(cursor)
                                              : ConvertTightWindow<Windows>(cursor))) {
    }
    StorePositions(cursor, io_source, io_target);
    return cursor.m_from == cursor.m_fromEnd
               ? TRANSCODER_DONE
               : AVX2_TABLE.m_functions[SOURCE][TARGET](io_source, io_target);
}

// Converts a text of up to 64 bytes, with zeros after it, that is not plain. A code point that its
// end cuts off is not valid, because of the zeros or because GetCut finds it.
template <int SOURCE, int TARGET, class Windows>
__attribute__((noinline)) std::int32_t ConvertOneWindow(TranscoderSource& io_source,
                                                        TranscoderTarget& io_target,
                                                        __m512i in_bytes) {
    Cursor cursor = MakeCursor(io_source, io_target);
    const std::uint64_t size = cursor.GetLeft();
    if (cursor.GetRoom() >= Windows::ROOM &&
        (size < WINDOW || Windows::GetCut(cursor.m_from) == 0) &&
        ConvertPadded<Windows>(cursor, in_bytes, size)) {
        TakeBackPadding<Windows>(cursor, cursor.m_fromEnd);
        StorePositions(cursor, io_source, io_target);
    }
    return cursor.m_from == cursor.m_fromEnd
               ? TRANSCODER_DONE
               : ConvertWindows<SOURCE, TARGET, Windows>(io_source, io_target);
}

// The entry of every function: it converts up to 64 plain bytes here and the rest out of line.
template <int SOURCE, int TARGET, class Windows>
ORSKA_INLINE std::int32_t ConvertTextByWindows(TranscoderSource& io_source,
                                               TranscoderTarget& io_target) {
    const std::uint64_t size = io_source.m_length - io_source.m_position;
    const std::uint64_t end =
        io_target.m_position + size / Windows::SOURCE_UNIT * Windows::TARGET_UNIT;
    if (size <= WINDOW && size % Windows::SOURCE_UNIT == 0 && io_target.m_length >= end) {
        const __m512i bytes =
            LoadWindowPart<Windows::SOURCE_UNIT>(io_source.m_data + io_source.m_position, size);
        if (Windows::IsPlain(bytes)) {
            char* const to = io_target.m_data + io_target.m_position;
            io_source.m_position = io_source.m_length;
            io_target.m_position = end;
            Windows::WritePlainPart(to, bytes, size);
            return TRANSCODER_DONE;
        }
        return ConvertOneWindow<SOURCE, TARGET, Windows>(io_source, io_target, bytes);
    }
    return ConvertWindows<SOURCE, TARGET, Windows>(io_source, io_target);
}

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
