// The block steps for processors with AVX2.
#include <immintrin.h>

#include "PlatformAbstraction/ICU/UnicodeFormsKernels.h"

namespace Orska::Support::UnicodeForms {

namespace {

constexpr std::uint64_t BLOCK = 16;
constexpr std::uint64_t BLOCKS_AT_ONCE = 4;

__m256i LoadUnits(const char* in_at) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in_at));
}

void StoreUnits(char* out_at, __m256i in_units) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out_at), in_units);
}

// Sets each 16-bit lane whose upper bits are those of the kind to all ones.
__m256i IsKind(__m256i in_units, int in_mask, int in_kind) {
    return _mm256_cmpeq_epi16(
        _mm256_and_si256(in_units, _mm256_set1_epi16(static_cast<short>(in_mask))),
        _mm256_set1_epi16(static_cast<short>(in_kind)));
}

// Copies a block and returns the lanes in which a lead has no trail after it or a trail no lead
// before it. Reads 2 bytes past the block.
__m256i CopyBlock(const char* in_source, char* out_target) {
    const __m256i units = LoadUnits(in_source);
    const __m256i next = LoadUnits(in_source + 2);
    StoreUnits(out_target, units);
    return _mm256_xor_si256(IsKind(units, 0xFC00, 0xD800), IsKind(next, 0xFC00, 0xDC00));
}

// Lanes that are surrogates.
struct Plain {
    static __m256i GetOthers(__m256i in_units) { return IsKind(in_units, 0xF800, 0xD800); }
};

// Lanes that are not a lead in an even place or a trail in an odd one.
struct Pairs {
    static __m256i GetOthers(__m256i in_units) {
        const __m256i kinds = _mm256_set1_epi32(static_cast<int>(0xDC00D800));
        const __m256i mask = _mm256_set1_epi16(static_cast<short>(0xFC00));
        return _mm256_xor_si256(_mm256_and_si256(in_units, mask), kinds);
    }
};

// Copies blocks until some hold units outside the form, and returns the units done. Most text has
// no surrogates, or runs of nothing else, so one test of each unit is enough.
template <class Form>
std::uint64_t CopyBlocksOf(const char* in_source, char* out_target, std::uint64_t in_count) {
    std::uint64_t done = 0;
    for (; done + BLOCKS_AT_ONCE * BLOCK <= in_count; done += BLOCKS_AT_ONCE * BLOCK) {
        const char* const source = in_source + 2 * done;
        char* const target = out_target + 2 * done;
        __m256i others = _mm256_setzero_si256();
        for (std::uint64_t i = 0; i < BLOCKS_AT_ONCE; ++i) {
            const __m256i units = LoadUnits(source + 32 * i);
            StoreUnits(target + 32 * i, units);
            others = _mm256_or_si256(others, Form::GetOthers(units));
        }
        if (!_mm256_testz_si256(others, others)) {
            break;
        }
    }
    return done;
}

bool IsUnitOfKind(const char* in_at, unsigned in_kind) {
    return (static_cast<unsigned char>(in_at[1]) & 0xFCU) == in_kind >> 8;
}

}  // namespace

// Reads 2 bytes past the block, which the loop's limit allows; writes the block.
std::uint64_t CopyUtf16_AVX2(const char* in_source, char* out_target, std::uint64_t in_count) {
    if (in_count < BLOCK || IsUnitOfKind(in_source, 0xDC00)) {
        return in_count < BLOCK ? CopyUtf16_SSE2(in_source, out_target, in_count) : 0;
    }
    std::uint64_t done = CopyBlocksOf<Plain>(in_source, out_target, in_count);
    done += CopyBlocksOf<Pairs>(in_source + 2 * done, out_target + 2 * done, in_count - done);
    // Neither ends after a lead, and the code below looks for trails after its own units only.
    if (done < in_count && IsUnitOfKind(in_source + 2 * done, 0xDC00)) {
        return done;
    }
    while (done + BLOCKS_AT_ONCE * BLOCK < in_count) {
        const char* const source = in_source + 2 * done;
        char* const target = out_target + 2 * done;
        const __m256i differ = _mm256_or_si256(
            _mm256_or_si256(CopyBlock(source, target), CopyBlock(source + 32, target + 32)),
            _mm256_or_si256(CopyBlock(source + 64, target + 64),
                            CopyBlock(source + 96, target + 96)));
        if (!_mm256_testz_si256(differ, differ)) {
            break;
        }
        done += BLOCKS_AT_ONCE * BLOCK;
    }
    while (done + BLOCK < in_count) {
        const __m256i differ = CopyBlock(in_source + 2 * done, out_target + 2 * done);
        if (!_mm256_testz_si256(differ, differ)) {
            break;
        }
        done += BLOCK;
    }
    // The last block may overlap the one before it.
    if (done + BLOCK >= in_count) {
        const __m256i units = LoadUnits(in_source + 2 * (in_count - BLOCK));
        const __m256i surrogates = IsKind(units, 0xF800, 0xD800);
        if (_mm256_testz_si256(surrogates, surrogates)) {
            StoreUnits(out_target + 2 * (in_count - BLOCK), units);
            return in_count;
        }
    }
    return done > 0 && IsUnitOfKind(in_source + 2 * (done - 1), 0xD800) ? done - 1 : done;
}

}  // namespace Orska::Support::UnicodeForms
