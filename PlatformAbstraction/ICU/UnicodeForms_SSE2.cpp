// The block steps that every x86-64 processor can do.
#include <emmintrin.h>

#include "PlatformAbstraction/ICU/UnicodeFormsKernels.h"

namespace Orska::Support::UnicodeForms {

namespace {

constexpr std::uint64_t BLOCK = 8;

__m128i LoadUnits(const char* in_at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_at));
}

void StoreUnits(char* out_at, __m128i in_units) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_at), in_units);
}

// Sets each 16-bit lane whose upper six bits are those of the kind to all ones.
__m128i IsKind(__m128i in_units, int in_kind) {
    return _mm_cmpeq_epi16(_mm_and_si128(in_units, _mm_set1_epi16(static_cast<short>(0xFC00))),
                           _mm_set1_epi16(static_cast<short>(in_kind)));
}

bool HasSurrogate(__m128i in_units) {
    const __m128i upper = _mm_and_si128(in_units, _mm_set1_epi16(static_cast<short>(0xF800)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(upper, _mm_set1_epi16(static_cast<short>(0xD800)))) !=
           0;
}

template <bool IS_BIG>
bool IsUnitOfKind(const char* in_at, unsigned in_kind) {
    return (static_cast<unsigned char>(in_at[IS_BIG ? 0 : 1]) & 0xFCU) == in_kind >> 8;
}

// Swaps the two bytes of each unit if IS_BIG.
template <bool IS_BIG>
__m128i Order(__m128i in_units) {
    return IS_BIG ? _mm_or_si128(_mm_slli_epi16(in_units, 8), _mm_srli_epi16(in_units, 8))
                  : in_units;
}

// Reads 2 bytes past the block, which the loop's limit allows; writes the block.
template <bool IS_SOURCE_BIG, bool IS_TARGET_BIG>
std::uint64_t CopyUtf16(const char* in_source, char* out_target, std::uint64_t in_count) {
    const auto load = [](const char* in_at) { return Order<IS_SOURCE_BIG>(LoadUnits(in_at)); };
    const auto store = [](char* out_at, __m128i in_units) {
        StoreUnits(out_at, Order<IS_TARGET_BIG>(in_units));
    };
    if (in_count == 0 || IsUnitOfKind<IS_SOURCE_BIG>(in_source, 0xDC00)) {
        return 0;
    }
    std::uint64_t done = 0;
    while (done + BLOCK < in_count) {
        // Every lead must have a trail after it, and every trail a lead before it.
        const __m128i units = load(in_source + 2 * done);
        const __m128i next = load(in_source + 2 * done + 2);
        const __m128i differ = _mm_xor_si128(IsKind(units, 0xD800), IsKind(next, 0xDC00));
        if (_mm_movemask_epi8(differ) != 0) {
            break;
        }
        store(out_target + 2 * done, units);
        done += BLOCK;
    }
    // The last block may overlap the one before it.
    if (in_count >= BLOCK && done + BLOCK >= in_count) {
        const __m128i units = load(in_source + 2 * (in_count - BLOCK));
        if (!HasSurrogate(units)) {
            store(out_target + 2 * (in_count - BLOCK), units);
            return in_count;
        }
    }
    return done > 0 && IsUnitOfKind<IS_SOURCE_BIG>(in_source + 2 * (done - 1), 0xD800) ? done - 1
                                                                                       : done;
}

}  // namespace

std::uint64_t CopyUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return CopyUtf16<false, false>(in_source, out_target, in_count);
}

std::uint64_t Utf16FromBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return CopyUtf16<true, false>(in_source, out_target, in_count);
}

std::uint64_t Utf16ToBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return CopyUtf16<false, true>(in_source, out_target, in_count);
}

// Reads the block and writes twice its size.
std::uint64_t Utf16ToUtf32_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    std::uint64_t done = 0;
    while (done + BLOCK <= in_count) {
        const __m128i units = LoadUnits(in_source + 2 * done);
        if (HasSurrogate(units)) {
            break;
        }
        StoreUnits(out_target + 4 * done, _mm_unpacklo_epi16(units, _mm_setzero_si128()));
        StoreUnits(out_target + 4 * done + 16, _mm_unpackhi_epi16(units, _mm_setzero_si128()));
        done += BLOCK;
    }
    return done;
}

// Reads the block and writes half its size.
std::uint64_t Utf32ToUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    std::uint64_t done = 0;
    while (done + BLOCK <= in_count) {
        const __m128i low = LoadUnits(in_source + 4 * done);
        const __m128i high = LoadUnits(in_source + 4 * done + 16);
        const __m128i above = _mm_srli_epi32(_mm_or_si128(low, high), 16);
        // The signed saturation of the packing does not change sign-extended values.
        const __m128i units = _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(low, 16), 16),
                                              _mm_srai_epi32(_mm_slli_epi32(high, 16), 16));
        const bool isBmp = _mm_movemask_epi8(_mm_cmpeq_epi32(above, _mm_setzero_si128())) == 0xFFFF;
        if (!isBmp || HasSurrogate(units)) {
            break;
        }
        StoreUnits(out_target + 2 * done, units);
        done += BLOCK;
    }
    return done;
}

// Reads two blocks and writes their bytes.
std::uint64_t Utf16ToBytes_SSE2(const char* in_source, char* out_target, std::uint64_t in_count,
                                ByteRange in_range) {
    const __m128i upper = _mm_set1_epi16(static_cast<short>(~in_range.m_last));
    const __m128i notAscii = _mm_set1_epi16(static_cast<short>(~0x7F));
    const __m128i hole = _mm_set1_epi16(static_cast<short>(in_range.m_hole));
    const auto isInHole = [&](__m128i in_units) {
        return _mm_cmpeq_epi16(_mm_and_si128(in_units, _mm_set1_epi16(static_cast<short>(0xFFE0))),
                               hole);
    };
    const auto isZero = [](__m128i in_units) {
        return _mm_movemask_epi8(_mm_cmpeq_epi16(in_units, _mm_setzero_si128())) == 0xFFFF;
    };
    std::uint64_t done = 0;
    while (done + 2 * BLOCK <= in_count) {
        const __m128i low = LoadUnits(in_source + 2 * done);
        const __m128i high = LoadUnits(in_source + 2 * done + 16);
        const __m128i either = _mm_or_si128(low, high);
        if (!isZero(_mm_and_si128(either, notAscii)) &&
            !isZero(_mm_or_si128(_mm_and_si128(either, upper),
                                 _mm_or_si128(isInHole(low), isInHole(high))))) {
            break;
        }
        StoreUnits(out_target + done, _mm_packus_epi16(low, high));
        done += 2 * BLOCK;
    }
    return done;
}

}  // namespace Orska::Support::UnicodeForms
