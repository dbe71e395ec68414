// The block steps that every x86-64 processor can do.
#include "PlatformAbstraction/ICU/UnicodeFormsCopy.h"

namespace Orska::Support::UnicodeForms {

namespace {

using V = Siconv::Vector128;

constexpr std::uint64_t BLOCK = V::SIZE / 2;

bool HasSurrogate(V::Type in_units) { return !V::IsZero(IsKind<V, 0xF800, 0xD800>(in_units)); }

}  // namespace

std::uint64_t CopyUtf16_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return Copy<V, false, false>::Convert(in_source, out_target, in_count);
}

std::uint64_t Utf16FromBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return Copy<V, true, false>::Convert(in_source, out_target, in_count);
}

std::uint64_t Utf16ToBig_SSE2(const char* in_source, char* out_target, std::uint64_t in_count) {
    return Copy<V, false, true>::Convert(in_source, out_target, in_count);
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
    std::uint64_t done = 0;
    for (; done + 2 * BLOCK <= in_count; done += 2 * BLOCK) {
        const auto low = V::Load(in_source + 2 * done);
        const auto high = V::Load(in_source + 2 * done + 16);
        const auto either = V::Or(low, high);
        if (!V::IsZero(V::And(either, V::All16<0xFF80>())) &&
            !V::IsZero(V::Or(V::And(either, upper), V::Or(isInHole(low), isInHole(high))))) {
            break;
        }
        V::Store(out_target + done, V::PackUnsigned16(low, high));
    }
    return done;
}

}  // namespace Orska::Support::UnicodeForms
