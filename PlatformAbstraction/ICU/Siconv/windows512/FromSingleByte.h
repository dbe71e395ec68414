// From latin1 and cp1252 with AVX-512 VBMI2. Included by kernels only; everything is local to the
// including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMSINGLEBYTE_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_FROMSINGLEBYTE_H

#include <type_traits>

#include "PlatformAbstraction/ICU/Siconv/scalar/Cp1252.h"
#include "PlatformAbstraction/ICU/Siconv/windows512/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

struct Latin1Bytes {
    static ORSKA_INLINE void GetUnits(__m512i in_bytes, __m512i (&out_units)[2]) {
        Widen16<false>(in_bytes, out_units);
    }
};

struct Cp1252Bytes {
    static ORSKA_INLINE void GetUnits(__m512i in_bytes, __m512i (&out_units)[2]) {
        // The code points of 80 to 9F.
        const __m512i high = _mm512_loadu_si512(CP1252_HIGH);
        Widen16<false>(in_bytes, out_units);
        for (__m512i& units : out_units) {
            const __mmask32 isMapped =
                _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, All16<0xE0>()), All16<0x80>());
            // An index counts by its lowest five bits.
            units = _mm512_mask_permutexvar_epi16(units, isMapped, units, high);
        }
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

    static ORSKA_INLINE bool ConvertWhole(Cursor& io_cursor, __m512i in_bytes, std::uint64_t) {
        Utf8Output<true> output(io_cursor.m_to, io_cursor.m_toEnd);
        Put(in_bytes, WINDOW, output);
        io_cursor.m_from += WINDOW;
        io_cursor.m_to = output.GetTo();
        return true;
    }

    static ORSKA_INLINE bool ConvertPart(Cursor& io_cursor, __m512i in_bytes,
                                         std::uint64_t in_size) {
        Utf8Output<false> output(io_cursor.m_to, io_cursor.m_toEnd);
        Put(in_bytes, in_size, output);
        io_cursor.m_from += output.GetCodePoints();
        io_cursor.m_to = output.GetTo();
        return !output.IsFull();
    }

private:
    template <bool IS_WHOLE>
    static ORSKA_INLINE void Put(__m512i in_bytes, std::uint64_t in_size,
                                 Utf8Output<IS_WHOLE>& io_output) {
        __m512i units[2];
        Set::GetUnits(in_bytes, units);
        PutUnits(units[0], in_size < WINDOW / 2 ? in_size : WINDOW / 2, io_output);
        if (in_size > WINDOW / 2) {
            PutUnits(units[1], in_size - WINDOW / 2, io_output);
        }
    }
};

template <int SOURCE>
using WindowSetOf = std::conditional_t<SOURCE == CP1252, Cp1252Bytes, Latin1Bytes>;

// Towards units of one size the positions are known beforehand. Target: GetParts gives UNIT vectors
// of 64 bytes each for 64 bytes.
template <class Target>
ORSKA_INLINE std::int32_t ConvertFixedByWindows(TranscoderSource& io_source,
                                                TranscoderTarget& io_target) {
    const std::uint64_t wanted = io_source.m_length - io_source.m_position;
    const std::uint64_t room = (io_target.m_length - io_target.m_position) / Target::UNIT;
    const std::uint64_t count = wanted < room ? wanted : room;
    const char* const from = io_source.m_data + io_source.m_position;
    char* const to = io_target.m_data + io_target.m_position;
    __m512i parts[Target::UNIT];
    std::uint64_t at = 0;
    for (; count - at >= WINDOW; at += WINDOW) {
        Target::GetParts(LoadWindow(from + at), parts);
        StoreWhole(to + at * Target::UNIT, parts);
    }
    if (at < count) {
        Target::GetParts(LoadWindowPart(from + at, count - at), parts);
        StoreParts(to + at * Target::UNIT, parts, (count - at) * Target::UNIT);
    }
    io_source.m_position += count;
    io_target.m_position += count * Target::UNIT;
    return count == wanted ? TRANSCODER_DONE : TRANSCODER_FULL;
}

template <class Set, bool IS_BIG>
struct WindowToUtf16 {
    static constexpr std::uint32_t UNIT = 2;

    static ORSKA_INLINE void GetParts(__m512i in_bytes, __m512i (&out_parts)[UNIT]) {
        Set::GetUnits(in_bytes, out_parts);
        out_parts[0] = OrderUnits16<IS_BIG>(out_parts[0]);
        out_parts[1] = OrderUnits16<IS_BIG>(out_parts[1]);
    }
};

template <bool IS_BIG>
struct WindowToUtf32 {
    static constexpr std::uint32_t UNIT = 4;

    static ORSKA_INLINE void GetParts(__m512i in_bytes, __m512i (&out_parts)[UNIT]) {
        Widen32<IS_BIG>(in_bytes, out_parts);
    }
};

// From cp1252. Code points above FF become the substitute.
struct WindowToSingleByte {
    static constexpr std::uint32_t UNIT = 1;

    static ORSKA_INLINE void GetParts(__m512i in_bytes, __m512i (&out_parts)[UNIT]) {
        const std::uint64_t isMapped =
            _mm512_cmplt_epu8_mask(_mm512_xor_si512(in_bytes, All8<0x80>()), All8<0x20>());
        // 81, 8D, 8F, 90 and 9D stay; an index counts by its lowest six bits.
        const __m512i high =
            _mm512_set_epi64(0, 0, 0, 0, 0x1A1A9D1A1A1A1A1A, 0x1A1A1A1A1A1A1A90,
                             static_cast<long long>(0x8F1A8D1A1A1A1A1A), 0x1A1A1A1A1A1A811A);
        out_parts[0] = _mm512_mask_permutexvar_epi8(in_bytes, isMapped, in_bytes, high);
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
