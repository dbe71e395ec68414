// latin1 and cp1252 for the kernels. Included by kernels only; everything is local to the
// including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_SINGLEBYTESETS_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_SINGLEBYTESETS_H

#include <type_traits>

#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/Vector128.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Cp1252.h"

namespace Orska::Support::Siconv {

namespace {

// C2 or C3, the lead of the UTF-8 of a code point from 80 to FF.
template <class V>
ORSKA_INLINE typename V::Type GetLead(typename V::Type in_bytes) {
    // Signed: bytes from 80 to BF are below C0.
    return V::Add8(V::template All8<0xC3>(), V::GreaterSigned8(V::template All8<0xC0>(), in_bytes));
}

struct Latin1Set {
    static constexpr std::uint64_t MAX_UTF8 = 2;

    // Maps bytes to the low and high bytes of their code points; true when some are above 7FF.
    template <class V>
    static ORSKA_INLINE bool Map(typename V::Type&, typename V::Type&) {
        return false;
    }
    // Maps bytes to the last two bytes of their UTF-8; for ASCII the result is unspecified. True
    // when some have three bytes; the first is then E2.
    template <class V>
    static ORSKA_INLINE bool MapToUtf8(typename V::Type, typename V::Type&, typename V::Type&) {
        return false;
    }
};

struct Cp1252Set {
    static constexpr std::uint64_t MAX_UTF8 = 3;

    template <class V>
    static ORSKA_INLINE bool Map(typename V::Type& io_low, typename V::Type& out_high) {
        const auto isMapped = IsMapped<V>(io_low);
        if (V::GetSignBits(isMapped) == 0) {
            return false;
        }
        const auto other = V::AndNot(isMapped, io_low);
        typename V::Type low;
        Lookup<V, GetCodePoint>(io_low, low, out_high);
        io_low = V::Or(low, other);
        return true;
    }
    template <class V>
    static ORSKA_INLINE bool MapToUtf8(typename V::Type in_at, typename V::Type& out_middle,
                                       typename V::Type& out_last) {
        const auto isMapped = IsMapped<V>(in_at);
        if (V::GetSignBits(isMapped) == 0) {
            return false;
        }
        const auto follower = V::And(in_at, V::template All8<0xBF>());
        typename V::Type last;
        typename V::Type middle;
        Lookup<V, GetUtf8>(in_at, last, middle);
        out_middle = V::Or(middle, V::AndNot(isMapped, GetLead<V>(in_at)));
        out_last = V::Or(last, V::AndNot(isMapped, follower));
        return true;
    }

private:
    template <class V>
    static ORSKA_INLINE typename V::Type IsMapped(typename V::Type in_at) {
        return V::GreaterSigned8(V::template All8<0xA0>(), in_at);  // signed: 80 to 9F
    }

    // The code point of a byte from 80 to 9F.
    static constexpr unsigned GetCodePoint(int in_index) { return CP1252_HIGH[in_index]; }
    static constexpr unsigned GetUtf8(int in_index) {
        const unsigned at = CP1252_HIGH[in_index];
        const unsigned middle = at < 0x800 ? 0xC0 | at >> 6 : 0x80 | (at >> 6 & 0x3F);
        return middle << 8 | 0x80 | (at & 0x3F);
    }
    // The low (SHIFT 0) or high (8) bytes of four code points, in a word.
    template <auto GET, int FIRST, int SHIFT>
    static constexpr std::uint32_t WORD = (GET(FIRST) >> SHIFT & 0xFFU) |
                                          (GET(FIRST + 1) >> SHIFT & 0xFFU) << 8 |
                                          (GET(FIRST + 2) >> SHIFT & 0xFFU) << 16 |
                                          (GET(FIRST + 3) >> SHIFT & 0xFFU) << 24;
    template <class V, auto GET, int FIRST, int SHIFT>
    static ORSKA_INLINE typename V::Type GetBytes() {
        return V::RepeatLane(WORD<GET, FIRST, SHIFT>, WORD<GET, FIRST + 4, SHIFT>,
                             WORD<GET, FIRST + 8, SHIFT>, WORD<GET, FIRST + 12, SHIFT>);
    }
    // The low and high bytes for 80 to 9F, and 0 for all other bytes.
    template <class V, auto GET>
    static ORSKA_INLINE void Lookup(typename V::Type in_at, typename V::Type& out_low,
                                    typename V::Type& out_high) {
        // The indexes of bytes that are not 80 to 8F, or not 90 to 9F, get their highest bit set,
        // and the shuffle then writes 0.
        const auto most = V::template All8<0x70>();
        const auto in8 = V::AddSaturated8(V::Xor(in_at, V::template All8<0x80>()), most);
        const auto in9 = V::AddSaturated8(V::Xor(in_at, V::template All8<0x90>()), most);
        out_low = V::Or(V::Shuffle(GetBytes<V, GET, 0, 0>(), in8),
                        V::Shuffle(GetBytes<V, GET, 16, 0>(), in9));
        out_high = V::Or(V::Shuffle(GetBytes<V, GET, 0, 8>(), in8),
                         V::Shuffle(GetBytes<V, GET, 16, 8>(), in9));
    }
};

template <int SOURCE>
using SetOf = std::conditional_t<SOURCE == CP1252, Cp1252Set, Latin1Set>;

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
