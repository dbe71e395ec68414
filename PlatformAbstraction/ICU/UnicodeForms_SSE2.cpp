// The block steps that every x86-64 processor can do.
#include "PlatformAbstraction/ICU/UnicodeFormsCopy.h"

namespace Orska::Support::UnicodeForms {

namespace {

using V = Siconv::Vector128;

constexpr std::uint64_t BLOCK = V::SIZE / 2;

bool HasSurrogate(V::Type in_units) { return !V::IsZero(IsKind<V, 0xF800, 0xD800>(in_units)); }

// Copies fewer units than a block by two halves of a vector, which may overlap.
template <bool IS_SOURCE_BIG, bool IS_TARGET_BIG>
std::uint64_t CopyUnits(const char* in_source, char* out_target, std::uint64_t in_count) {
    using Blocks = Copy<V, IS_SOURCE_BIG, IS_TARGET_BIG>;
    if (in_count < BLOCK / 2 || in_count >= BLOCK) {
        return Blocks::Convert(in_source, out_target, in_count);
    }
    const std::uint64_t second = 2 * (in_count - BLOCK / 2);
    const auto load = [in_source](std::uint64_t in_at) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in_source + in_at));
    };
    const auto store = [out_target](std::uint64_t in_at, V::Type in_units) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out_target + in_at), in_units);
    };
    auto units = Blocks::template Order<IS_SOURCE_BIG>(_mm_unpacklo_epi64(load(0), load(second)));
    if (HasSurrogate(units)) {
        return 0;
    }
    units = Blocks::template Order<IS_TARGET_BIG>(units);
    store(0, units);
    store(second, _mm_unpackhi_epi64(units, units));
    return in_count;
}

}  // namespace

std::uint64_t CopyUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return CopyUnits<false, false>(in_source, out_target, in_count);
}

std::uint64_t Utf16FromBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return CopyUnits<true, false>(in_source, out_target, in_count);
}

std::uint64_t Utf16ToBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return CopyUnits<false, true>(in_source, out_target, in_count);
}

// Reads the block and writes twice its size.
std::uint64_t Utf16ToUtf32_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    std::uint64_t done = 0;
    for (; done + BLOCK <= in_count; done += BLOCK) {
        const auto units = V::Load(in_source + 2 * done);
        if (HasSurrogate(units)) {
            break;
        }
        V::Store(out_target + 4 * done, V::InterleaveLow16(units, V::Zero()));
        V::Store(out_target + 4 * done + 16, V::InterleaveHigh16(units, V::Zero()));
    }
    return done;
}

// Reads the block and writes half its size.
std::uint64_t Utf32ToUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    // The signed saturation of the packing does not change sign-extended values.
    const auto extend = [](V::Type in_units) {
        return _mm_srai_epi32(V::ShiftLeft32<16>(in_units), 16);
    };
    std::uint64_t done = 0;
    for (; done + BLOCK <= in_count; done += BLOCK) {
        const auto low = V::Load(in_source + 4 * done);
        const auto high = V::Load(in_source + 4 * done + 16);
        const auto units = V::PackSigned32(extend(low), extend(high));
        if (!V::IsZero(V::ShiftRight32<16>(V::Or(low, high))) || HasSurrogate(units)) {
            break;
        }
        V::Store(out_target + 2 * done, units);
    }
    return done;
}

// Reads two blocks and writes their bytes.
std::uint64_t Utf16ToBytes_SSE2(const char* in_source, char* out_target, std::uint64_t in_count,
                                ByteRange in_range) {
    const auto upper = _mm_set1_epi16(static_cast<short>(~in_range.m_last));
    const auto hole = _mm_set1_epi16(static_cast<short>(in_range.m_hole));
    const auto isInHole = [hole](V::Type in_units) {
        return V::Equal16(V::And(in_units, V::All16<0xFFE0>()), hole);
    };
    const auto areBytes = [&](V::Type in_low, V::Type in_high) {
        const auto either = V::Or(in_low, in_high);
        return V::IsZero(V::And(either, V::All16<0xFF80>())) ||
               V::IsZero(V::Or(V::And(either, upper), V::Or(isInHole(in_low), isInHole(in_high))));
    };
    std::uint64_t done = 0;
    for (; done + 2 * BLOCK <= in_count; done += 2 * BLOCK) {
        const auto low = V::Load(in_source + 2 * done);
        const auto high = V::Load(in_source + 2 * done + 16);
        if (!areBytes(low, high)) {
            return done;
        }
        V::Store(out_target + done, V::PackUnsigned16(low, high));
    }
    // The rest uses two blocks, which may overlap.
    if (in_count - done >= BLOCK) {
        const auto low = V::Load(in_source + 2 * done);
        const auto high = V::Load(in_source + 2 * (in_count - BLOCK));
        if (areBytes(low, high)) {
            V::WriteNarrow16(out_target + done, low);
            V::WriteNarrow16(out_target + in_count - BLOCK, high);
            return in_count;
        }
    }
    return done;
}

}  // namespace Orska::Support::UnicodeForms
