// All pairs with the vectors of a level, V: tells which blocks convert which pair. Included by
// levels only; everything is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_BLOCKFORM_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_BLOCKFORM_H

#include "PlatformAbstraction/ICU/Siconv/blocks/FromUtf8.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/ToFixedUnits.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/ToSingleByte.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

template <class V, int TARGET>
using TargetOfUtf8 = TypeOf<TARGET, void, UnitsOf16<V, IS_BIG_ENDIAN<TARGET>>,
                            UnitsOf32<V, IS_BIG_ENDIAN<TARGET>>, UnitsOf8<V>>;
template <class V, int SOURCE, int TARGET>
using BlocksOf = TypeOf<SOURCE, Utf8Blocks<V, TargetOfUtf8<V, TARGET>>,
                        std::conditional_t<TARGET == UTF8, Utf16Blocks<V, IS_BIG_ENDIAN<SOURCE>>,
                                           Utf16ToSingleByteBlocks<V, IS_BIG_ENDIAN<SOURCE>>>,
                        Utf32Blocks<V, IS_BIG_ENDIAN<SOURCE>>, SingleByteBlocks<V, SetOf<SOURCE>>>;

template <class V>
struct BlockForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        if constexpr (SOURCE < LATIN1 || TARGET == UTF8) {
            return ConvertText<SOURCE, TARGET, BlocksOf<Vector128, SOURCE, TARGET>,
                               BlocksOf<V, SOURCE, TARGET>>(io_source, io_target);
        } else {
            using Units = FixedUnits<SetOf<SOURCE>, UNIT<TARGET>, IS_BIG_ENDIAN<TARGET>>;
            return ConvertFixed<V, Units>(io_source, io_target);
        }
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
