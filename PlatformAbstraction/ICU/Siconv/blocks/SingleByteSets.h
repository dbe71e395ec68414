// What latin1 and cp1252 mean to the kernels. Included by kernels only; everything is local to the
// including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_SINGLEBYTESETS_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_SINGLEBYTESETS_H

#include <type_traits>

#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/Vector128.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Cp1252.h"

namespace Orska::Support::Siconv {

namespace {

struct Latin1Set {
    static constexpr std::uint64_t MAX_UTF8 = 2;

    // Bytes to the low and high bytes of their code points; true when some are above 7FF.
    template <class V>
    static ORSKA_INLINE bool Map(typename V::Type&, typename V::Type&) {
        return false;
    }
};

struct Cp1252Set {
    static constexpr std::uint64_t MAX_UTF8 = 3;

    template <class V>
    static ORSKA_INLINE bool Map(typename V::Type& io_low, typename V::Type& out_high) {
        const auto at = io_low;
        const auto isMapped =
            V::Equal8(V::And(at, V::template All8<0xE0>()), V::template All8<0x80>());
        if (V::GetSignBits(isMapped) == 0) {
            return false;
        }
        // The indexes of bytes that are not 80 to 8F, or not 90 to 9F, have their highest bit set,
        // for which a shuffle gives 0.
        const auto in8 =
            V::AddSaturated8(V::Xor(at, V::template All8<0x80>()), V::template All8<0x70>());
        const auto in9 =
            V::AddSaturated8(V::Xor(at, V::template All8<0x90>()), V::template All8<0x70>());
        const auto low =
            V::Or(V::Shuffle(GetBytes<V, 0, 0>(), in8), V::Shuffle(GetBytes<V, 16, 0>(), in9));
        io_low = V::Or(low, V::AndNot(isMapped, at));
        out_high =
            V::Or(V::Shuffle(GetBytes<V, 0, 8>(), in8), V::Shuffle(GetBytes<V, 16, 8>(), in9));
        return true;
    }

private:
    // The low (SHIFT 0) or high (8) bytes of the code points of four bytes of cp1252, in a word.
    template <int FIRST, int SHIFT>
    static constexpr std::uint32_t WORD = (CP1252_HIGH[FIRST] >> SHIFT & 0xFFU) |
                                          (CP1252_HIGH[FIRST + 1] >> SHIFT & 0xFFU) << 8 |
                                          (CP1252_HIGH[FIRST + 2] >> SHIFT & 0xFFU) << 16 |
                                          (CP1252_HIGH[FIRST + 3] >> SHIFT & 0xFFU) << 24;
    // Those of 80 + FIRST and the 15 bytes behind it.
    template <class V, int FIRST, int SHIFT>
    static ORSKA_INLINE typename V::Type GetBytes() {
        return V::RepeatLane(WORD<FIRST, SHIFT>, WORD<FIRST + 4, SHIFT>, WORD<FIRST + 8, SHIFT>,
                             WORD<FIRST + 12, SHIFT>);
    }
};

template <int SOURCE>
using SetOf = std::conditional_t<SOURCE == CP1252, Cp1252Set, Latin1Set>;

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
