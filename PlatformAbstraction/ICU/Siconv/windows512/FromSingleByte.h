// Converts latin1 and cp1252 with AVX-512 VBMI2. Included by kernels only; everything is local to
// the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMSINGLEBYTE_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMSINGLEBYTE_H

#include <type_traits>

#include "PlatformAbstraction/ICU/Siconv/scalar/Cp1252.h"
#include "PlatformAbstraction/ICU/Siconv/windows512/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

// Writes lanes of two bytes; of ASCII only the last byte is kept.
ORSKA_INLINE void PutTwoByteLanes(const __m512i (&in_lanes)[2], std::uint64_t in_isHigh,
                                  char*& io_to) {
    PutKept(io_to, in_lanes[0], _pdep_u64(in_isHigh & 0xFFFFFFFF, LANE16_FIRST) | ~LANE16_FIRST);
    PutKept(io_to, in_lanes[1], _pdep_u64(in_isHigh >> 32, LANE16_FIRST) | ~LANE16_FIRST);
}

// Map converts bytes in 16-bit units to their code points.
struct Latin1Bytes {
    static ORSKA_INLINE __m512i Map(__m512i in_units) { return in_units; }

    // Writes a whole window.
    static ORSKA_INLINE void PutWindow(__m512i in_bytes, char*& io_to) {
        __m512i lanes[2];
        InterleaveText(GetLead(in_bytes), GetFollower(in_bytes), lanes);
        PutTwoByteLanes(lanes, _mm512_movepi8_mask(in_bytes), io_to);
    }
    // C2 or C3, by bit 6.
    static ORSKA_INLINE __m512i GetLead(__m512i in_bytes) {
        return _mm512_ternarylogic_epi32(_mm512_srli_epi16(in_bytes, 6), All8<0x01>(), All8<0xC2>(),
                                         0xEA);
    }
    // Without bit 6 where bit 7 is set.
    static ORSKA_INLINE __m512i GetFollower(__m512i in_bytes) {
        return _mm512_ternarylogic_epi32(_mm512_srli_epi16(in_bytes, 1), All8<0x40>(), in_bytes,
                                         0x2A);
    }
};

// The last two bytes of the UTF-8 of 80 to 9F, and the order that puts them into lanes of
// three bytes.
struct Cp1252Utf8 {
    alignas(64) std::uint8_t m_middle[64];
    alignas(64) std::uint8_t m_last[64];
    alignas(64) std::uint8_t m_order[2][64];
};
consteval Cp1252Utf8 MakeCp1252Utf8() {
    Cp1252Utf8 table{};
    for (int i = 0; i < 32; ++i) {
        const char16_t at = CP1252_HIGH[i];
        table.m_middle[i] =
            static_cast<std::uint8_t>(at < 0x800 ? 0xC0 | at >> 6 : 0x80 | (at >> 6 & 0x3F));
        table.m_last[i] = static_cast<std::uint8_t>(0x80 | (at & 0x3F));
        table.m_order[i / 16][i % 16 * 3 + 1] = static_cast<std::uint8_t>(2 * i);
        table.m_order[i / 16][i % 16 * 3 + 2] = static_cast<std::uint8_t>(2 * i + 1);
    }
    return table;
}
constexpr Cp1252Utf8 CP1252_UTF8 = MakeCp1252Utf8();

struct Cp1252Bytes {
    static ORSKA_INLINE __m512i Map(__m512i in_units) {
        const __m512i high = _mm512_loadu_si512(CP1252_HIGH);
        const __mmask32 isMapped =
            _mm512_cmpeq_epi16_mask(_mm512_and_si512(in_units, All16<0xE0>()), All16<0x80>());
        // Only the lowest five bits of an index count.
        return _mm512_mask_permutexvar_epi16(in_units, isMapped, in_units, high);
    }
    static ORSKA_INLINE void PutWindow(__m512i in_bytes, char*& io_to) {
        const std::uint64_t isHigh = _mm512_movepi8_mask(in_bytes);
        const __mmask64 isMapped =
            _mm512_cmplt_epu8_mask(_mm512_xor_si512(in_bytes, All8<0x80>()), All8<0x20>());
        // Only the lowest six bits of an index count.
        const __m512i middle =
            _mm512_mask_permutexvar_epi8(Latin1Bytes::GetLead(in_bytes), isMapped, in_bytes,
                                         _mm512_load_si512(CP1252_UTF8.m_middle));
        const __m512i last =
            _mm512_mask_permutexvar_epi8(Latin1Bytes::GetFollower(in_bytes), isMapped, in_bytes,
                                         _mm512_load_si512(CP1252_UTF8.m_last));
        const std::uint64_t isLong = _mm512_mask_cmplt_epu8_mask(isMapped, middle, All8<0xC0>());
        __m512i lanes[2];
        InterleaveText(middle, last, lanes);
        if (isLong == 0) {
            PutTwoByteLanes(lanes, isHigh, io_to);
            return;
        }
        for (std::uint32_t i = 0; i < 4; ++i) {
            PutThreeByteLanes(_mm512_permutexvar_epi8(_mm512_load_si512(CP1252_UTF8.m_order[i % 2]),
                                                      lanes[i / 2]),
                              isHigh >> (16 * i), isLong >> (16 * i), io_to);
        }
    }

private:
    // Sixteen lanes. All code points of three bytes begin with E2.
    static ORSKA_INLINE void PutThreeByteLanes(__m512i in_lanes, std::uint64_t in_isHigh,
                                               std::uint64_t in_isLong, char*& io_to) {
        constexpr std::uint64_t FIRST = 0x249249249249;
        const std::uint64_t keep =
            _pdep_u64(in_isLong, FIRST) | _pdep_u64(in_isHigh, FIRST << 1) | FIRST << 2;
        PutKept(io_to, _mm512_mask_mov_epi8(in_lanes, FIRST, All8<0xE2>()), keep);
    }
};

template <class Set>
class SingleByteToUtf8Windows {
public:
    static constexpr std::uint64_t SOURCE_UNIT = 1;
    static constexpr std::uint64_t TARGET_UNIT = 1;
    static constexpr std::uint64_t ROOM = 4 * WINDOW;

    static ORSKA_INLINE bool IsPlain(__m512i in_bytes) {
        return _mm512_movepi8_mask(in_bytes) == 0;
    }
    static ORSKA_INLINE void WritePlain(char* out_to, __m512i in_bytes) {
        _mm512_storeu_si512(out_to, in_bytes);
    }
    static ORSKA_INLINE void WritePlainPart(char* out_to, __m512i in_bytes, std::uint64_t in_size) {
        StorePart(out_to, in_bytes, in_size);
    }
    static ORSKA_INLINE std::uint64_t GetCut(const char*) { return 0; }

    static ORSKA_INLINE std::uint64_t GetWhole(const char*, std::uint64_t in_size) {
        return in_size;
    }

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_bytes, std::uint64_t) {
        char* to = io_cursor.m_to;
        Set::PutWindow(in_bytes, to);
        io_cursor.m_from += WINDOW;
        io_cursor.m_to = to;
        return true;
    }
    static ORSKA_INLINE bool ConvertHalf(
        Cursor& io_cursor, __m512i in_bytes) requires std::is_same_v<Set, Latin1Bytes> {
        char* to = io_cursor.m_to;
        PutUnits2(_mm512_cvtepu8_epi16(GetLowHalf(in_bytes)), to);
        io_cursor.m_from += WINDOW / 2;
        io_cursor.m_to = to;
        return true;
    }
};

template <int SOURCE>
using WindowSetOf = std::conditional_t<SOURCE == CP1252, Cp1252Bytes, Latin1Bytes>;

// Loads bytes into units of UNIT bytes, as many as a vector holds; with in_count only that many,
// and zeros after them.
template <std::uint32_t UNIT>
ORSKA_INLINE __m512i LoadUnits(const char* in_from) {
    if constexpr (UNIT == 1) {
        return LoadWindow(in_from);
    } else if constexpr (UNIT == 2) {
        return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(in_from)));
    } else {
        return _mm512_cvtepu8_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in_from)));
    }
}
template <std::uint32_t UNIT>
ORSKA_INLINE __m512i LoadUnitsPart(const char* in_from, std::uint64_t in_count) {
    if constexpr (UNIT == 1) {
        return LoadWindowPart(in_from, in_count);
    } else if constexpr (UNIT == 2) {
        return _mm512_cvtepu8_epi16(
            _mm256_maskz_loadu_epi8(static_cast<__mmask32>(GetLowBits(in_count)), in_from));
    } else {
        return _mm512_cvtepu8_epi32(
            _mm_maskz_loadu_epi8(static_cast<__mmask16>(GetLowBits(in_count)), in_from));
    }
}

// The same for half a vector of 16-bit units.
ORSKA_INLINE __m512i LoadUnitsHalf(const char* in_from) {
    return _mm512_castsi256_si512(
        _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in_from))));
}
ORSKA_INLINE void StoreHalf(char* out_to, __m512i in_units) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out_to), GetLowHalf(in_units));
}

// Units of one size have positions known in advance. Target::GetUnits returns the units for a
// vector of bytes widened to UNIT bytes each. The last vector overlaps the one before.
template <class Target>
ORSKA_INLINE void ConvertFixedUnits(const char* in_from, std::uint64_t in_count, char* out_to) {
    constexpr std::uint32_t UNIT = Target::UNIT;
    constexpr std::uint64_t STEP = WINDOW / UNIT;
    if (in_count < STEP) {
        if constexpr (UNIT == 2) {
            if (in_count >= STEP / 2) {
                const std::uint64_t second = in_count - STEP / 2;
                StoreHalf(out_to, Target::GetUnits(LoadUnitsHalf(in_from)));
                StoreHalf(out_to + second * UNIT,
                          Target::GetUnits(LoadUnitsHalf(in_from + second)));
                return;
            }
        }
        StorePart(out_to, Target::GetUnits(LoadUnitsPart<UNIT>(in_from, in_count)),
                  in_count * UNIT);
        return;
    }
    const std::uint64_t last = in_count - STEP;
    for (std::uint64_t at = 0; at < last; at += STEP) {
        _mm512_storeu_si512(out_to + at * UNIT, Target::GetUnits(LoadUnits<UNIT>(in_from + at)));
    }
    _mm512_storeu_si512(out_to + last * UNIT, Target::GetUnits(LoadUnits<UNIT>(in_from + last)));
}

template <class Target>
__attribute__((noinline)) std::int32_t FillTarget(TranscoderSource& io_source,
                                                  TranscoderTarget& io_target) {
    const std::uint64_t count = (io_target.m_length - io_target.m_position) / Target::UNIT;
    ConvertFixedUnits<Target>(io_source.m_data + io_source.m_position, count,
                              io_target.m_data + io_target.m_position);
    io_source.m_position += count;
    io_target.m_position += count * Target::UNIT;
    return TRANSCODER_FULL;
}

template <class Target>
ORSKA_INLINE std::int32_t ConvertFixedByWindows(TranscoderSource& io_source,
                                                TranscoderTarget& io_target) {
    const std::uint64_t count = io_source.m_length - io_source.m_position;
    const std::uint64_t end = io_target.m_position + count * Target::UNIT;
    if (io_target.m_length < end) [[unlikely]] {
        return FillTarget<Target>(io_source, io_target);
    }
    const char* const from = io_source.m_data + io_source.m_position;
    char* const to = io_target.m_data + io_target.m_position;
    io_source.m_position = io_source.m_length;
    io_target.m_position = end;
    ConvertFixedUnits<Target>(from, count, to);
    return TRANSCODER_DONE;
}

template <class Set, bool IS_BIG>
struct WindowToUtf16 {
    static constexpr std::uint32_t UNIT = 2;

    static ORSKA_INLINE __m512i GetUnits(__m512i in_units) {
        return OrderUnits16<IS_BIG>(Set::Map(in_units));
    }
};

template <bool IS_BIG>
struct WindowToUtf32 {
    static constexpr std::uint32_t UNIT = 4;

    static ORSKA_INLINE __m512i GetUnits(__m512i in_units) {
        return IS_BIG ? _mm512_slli_epi32(in_units, 24) : in_units;
    }
};

// Converts cp1252. Code points above FF become the substitute.
struct WindowToSingleByte {
    static constexpr std::uint32_t UNIT = 1;

    static ORSKA_INLINE __m512i GetUnits(__m512i in_bytes) {
        const std::uint64_t isMapped =
            _mm512_cmplt_epu8_mask(_mm512_xor_si512(in_bytes, All8<0x80>()), All8<0x20>());
        // 81, 8D, 8F, 90 and 9D stay; only the lowest six bits of an index count.
        const __m512i high =
            _mm512_set_epi64(0, 0, 0, 0, 0x1A1A9D1A1A1A1A1A, 0x1A1A1A1A1A1A1A90,
                             static_cast<long long>(0x8F1A8D1A1A1A1A1A), 0x1A1A1A1A1A1A811A);
        return _mm512_mask_permutexvar_epi8(in_bytes, isMapped, in_bytes, high);
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
