// From latin1 or cp1252 to units of one size, where the positions are known beforehand. Included by
// kernels only; everything is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOFIXEDUNITS_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOFIXEDUNITS_H

#include "PlatformAbstraction/ICU/Siconv/blocks/Driver.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/SingleByteSets.h"

namespace Orska::Support::Siconv {

namespace {

// Targets: Write converts V::SIZE bytes into V::SIZE * UNIT.

template <class Set, bool IS_BIG>
struct FixedToUtf16 {
    static constexpr std::uint64_t UNIT = 2;

    template <class V>
    static ORSKA_INLINE void Write(char* out_to, typename V::Type in_at) {
        auto low = in_at;
        auto high = V::Zero();
        if (!Set::template Map<V>(low, high)) {
            V::template WriteWide16<IS_BIG>(out_to, in_at);
            return;
        }
        typename V::Type units[2];
        V::Widen(IS_BIG ? high : low, IS_BIG ? low : high, units[0], units[1]);
        V::Store(out_to, units[0]);
        V::Store(out_to + V::SIZE, units[1]);
    }
};

template <bool IS_BIG>
struct FixedToUtf32 {
    static constexpr std::uint64_t UNIT = 4;

    template <class V>
    static ORSKA_INLINE void Write(char* out_to, typename V::Type in_at) {
        V::template WriteWide32<IS_BIG>(out_to, in_at);
    }
};

// Code points above FF become the substitute.
template <class Set>
struct FixedToSingleByte {
    static constexpr std::uint64_t UNIT = 1;

    template <class V>
    static ORSKA_INLINE void Write(char* out_to, typename V::Type in_at) {
        auto low = in_at;
        auto high = V::Zero();
        Set::template Map<V>(low, high);
        V::Store(out_to, V::Select(V::template All8<0x1A>(), in_at, V::Equal8(high, V::Zero())));
    }
};

// Fewer than 16 bytes, and room for no more. Out of line, so that the others need no stack.
template <class Target>
__attribute__((noinline)) void ConvertFixedTight(const char* in_from, std::uint64_t in_count,
                                                 char* out_to) {
    alignas(16) char target[16 * Target::UNIT + 16];
    Target::template Write<Vector128>(target, Vector128::LoadPart(in_from, in_count));
    CopyPiece(out_to, target, in_count * Target::UNIT);
}

// At least V::SIZE bytes: the last block overlaps the one before.
template <class V, class Target>
ORSKA_INLINE void ConvertFixedBlocks(const char* in_from, std::uint64_t in_count, char* out_to) {
    const std::uint64_t last = in_count - V::SIZE;
    for (std::uint64_t at = 0; at < last; at += V::SIZE) {
        Target::template Write<V>(out_to + at * Target::UNIT, V::Load(in_from + at));
    }
    Target::template Write<V>(out_to + last * Target::UNIT, V::Load(in_from + last));
}

template <class V, class Target>
ORSKA_INLINE std::int32_t ConvertFixed(TranscoderSource& io_source, TranscoderTarget& io_target) {
    // In variables, because the compiler must assume that the contexts change with the target.
    const std::uint64_t sourceAt = io_source.m_position;
    const std::uint64_t targetAt = io_target.m_position;
    const std::uint64_t wanted = io_source.m_length - sourceAt;
    const std::uint64_t room = io_target.m_length - targetAt;
    const std::uint64_t count = wanted < room / Target::UNIT ? wanted : room / Target::UNIT;
    const char* const from = io_source.m_data + sourceAt;
    char* const to = io_target.m_data + targetAt;
    io_source.m_position = sourceAt + count;
    io_target.m_position = targetAt + count * Target::UNIT;
    if (count >= V::SIZE) {
        ConvertFixedBlocks<V, Target>(from, count, to);
    } else if (count >= 16) {
        ConvertFixedBlocks<Vector128, Target>(from, count, to);
    } else if (room >= 16 * Target::UNIT) {
        Target::template Write<Vector128>(to, Vector128::LoadPart(from, count));
    } else {
        ConvertFixedTight<Target>(from, count, to);
    }
    return count == wanted ? TRANSCODER_DONE : TRANSCODER_FULL;
}

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
