// Converts latin1 or cp1252 to units of one size, whose positions are known in advance. Included by
// kernels only; everything is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOFIXEDUNITS_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOFIXEDUNITS_H

#include "PlatformAbstraction/ICU/Siconv/blocks/Driver.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/SingleByteSets.h"

namespace Orska::Support::Siconv {

namespace {

// Write converts V::SIZE bytes to units of one size. In a unit of one byte, code points above FF
// become the substitute.
template <class Set, std::uint64_t UNIT_SIZE, bool IS_BIG>
struct FixedUnits {
    static constexpr std::uint64_t UNIT = UNIT_SIZE;

    template <class V>
    static ORSKA_INLINE void Write(char* out_to, const char* in_from) {
        if constexpr (UNIT == 4) {
            V::template WriteWide32From<IS_BIG>(out_to, in_from);
            return;
        }
        const auto at = V::Load(in_from);
        auto low = at;
        auto high = V::Zero();
        if (!Set::template Map<V>(low, high)) {
            if constexpr (UNIT == 1) {
                V::Store(out_to, at);
            } else {
                V::template WriteWide16<IS_BIG>(out_to, at);
            }
            return;
        }
        if constexpr (UNIT == 1) {
            V::Store(out_to, V::Select(V::template All8<0x1A>(), at, V::Equal8(high, V::Zero())));
        } else {
            V::template WriteUnits16<IS_BIG>(out_to, low, high);
        }
    }
};

// Converts fewer than 16 bytes when there is room for no more.
template <class Target>
ORSKA_INLINE void ConvertFixedTight(const char* in_from, std::uint64_t in_count, char* out_to) {
    char source[16];
    char target[16 * Target::UNIT];
    Vector128::Store(source, Vector128::LoadPart(in_from, in_count));
    Target::template Write<Vector128>(target, source);
    CopyPiece(out_to, target, in_count * Target::UNIT);
}

// Converts at least V::SIZE bytes: the last block overlaps the one before.
template <class V, class Target>
ORSKA_INLINE void ConvertFixedBlocks(const char* in_from, std::uint64_t in_count, char* out_to) {
    const std::uint64_t last = in_count - V::SIZE;
    for (std::uint64_t at = 0; at < last; at += V::SIZE) {
        Target::template Write<V>(out_to + at * Target::UNIT, in_from + at);
    }
    Target::template Write<V>(out_to + last * Target::UNIT, in_from + last);
}

template <class V, class Target>
__attribute__((noinline)) std::int32_t ConvertFixedAny(const char* in_from, std::uint64_t in_count,
                                                       char* out_to) {
    if (in_count >= V::SIZE) {
        ConvertFixedBlocks<V, Target>(in_from, in_count, out_to);
    } else if (in_count >= 16) {
        ConvertFixedBlocks<Vector128, Target>(in_from, in_count, out_to);
    } else {
        ConvertFixedTight<Target>(in_from, in_count, out_to);
    }
    return TRANSCODER_DONE;
}

template <class V, class Target>
__attribute__((noinline)) std::int32_t FillTarget(TranscoderSource& io_source,
                                                  TranscoderTarget& io_target) {
    const std::uint64_t count = (io_target.m_length - io_target.m_position) / Target::UNIT;
    ConvertFixedAny<V, Target>(io_source.m_data + io_source.m_position, count,
                               io_target.m_data + io_target.m_position);
    io_source.m_position += count;
    io_target.m_position += count * Target::UNIT;
    return TRANSCODER_FULL;
}

// Converts 16 to 64 bytes that fit here, by blocks from the start and to the end that may overlap,
// and the rest out of line.
template <class V, class Target>
ORSKA_INLINE std::int32_t ConvertFixed(TranscoderSource& io_source, TranscoderTarget& io_target) {
    const std::uint64_t size = io_source.m_length - io_source.m_position;
    const std::uint64_t end = io_target.m_position + size * Target::UNIT;
    if (io_target.m_length < end) [[unlikely]] {
        return FillTarget<V, Target>(io_source, io_target);
    }
    const char* const from = io_source.m_data + io_source.m_position;
    char* const to = io_target.m_data + io_target.m_position;
    io_source.m_position = io_source.m_length;
    io_target.m_position = end;
    if (size - 16 <= 32 - 16) [[likely]] {
        Target::template Write<Vector128>(to, from);
        if (size != 16) {
            Target::template Write<Vector128>(to + (size - 16) * Target::UNIT, from + size - 16);
        }
        return TRANSCODER_DONE;
    }
    if (size - 16 > 64 - 16) {
        return ConvertFixedAny<V, Target>(from, size, to);
    }
    const std::uint64_t second = size - 32;
    for (std::uint32_t i = 0; i < 32; i += V::SIZE) {
        Target::template Write<V>(to + i * Target::UNIT, from + i);
    }
    for (std::uint32_t i = 0; i < 32; i += V::SIZE) {
        Target::template Write<V>(to + (second + i) * Target::UNIT, from + second + i);
    }
    return TRANSCODER_DONE;
}

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
