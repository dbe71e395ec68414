// All pairs with the vectors of a level, V: tells which blocks convert which pair. Included by
// levels only; everything is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_BLOCKFORM_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_BLOCKFORM_H

#include <type_traits>

#include "PlatformAbstraction/ICU/Siconv/blocks/FromUtf8.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/ToFixedUnits.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/ToSingleByte.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

template <class V, int TARGET>
consteval auto SelectTargetOfUtf8() {
    if constexpr (IS_UTF16<TARGET>) {
        return std::type_identity<UnitsOf16<V, IS_BIG_ENDIAN<TARGET>>>();
    } else if constexpr (IS_UTF32<TARGET>) {
        return std::type_identity<UnitsOf32<V, IS_BIG_ENDIAN<TARGET>>>();
    } else {
        return std::type_identity<UnitsOf8<V>>();
    }
}

template <class V, int SOURCE, int TARGET>
consteval auto SelectBlocks() {
    if constexpr (SOURCE == UTF8) {
        return std::type_identity<
            Utf8Blocks<V, typename decltype(SelectTargetOfUtf8<V, TARGET>())::type>>();
    } else if constexpr (IS_UTF16<SOURCE> && TARGET == UTF8) {
        return std::type_identity<Utf16Blocks<V, IS_BIG_ENDIAN<SOURCE>>>();
    } else if constexpr (IS_UTF16<SOURCE>) {
        return std::type_identity<Utf16ToSingleByteBlocks<V, IS_BIG_ENDIAN<SOURCE>>>();
    } else if constexpr (IS_UTF32<SOURCE>) {
        return std::type_identity<Utf32Blocks<V, IS_BIG_ENDIAN<SOURCE>>>();
    } else {
        return std::type_identity<SingleByteBlocks<V, SetOf<SOURCE>>>();
    }
}
template <class V, int SOURCE, int TARGET>
using BlocksOf = typename decltype(SelectBlocks<V, SOURCE, TARGET>())::type;

template <class V>
struct BlockForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        if constexpr (SOURCE < LATIN1 || TARGET == UTF8) {
            return ConvertText<SOURCE, TARGET, BlocksOf<Vector128, SOURCE, TARGET>,
                               BlocksOf<V, SOURCE, TARGET>>(io_source, io_target);
        } else if constexpr (IS_UTF16<TARGET>) {
            return ConvertFixed<V, FixedToUtf16<SetOf<SOURCE>, IS_BIG_ENDIAN<TARGET>>>(io_source,
                                                                                       io_target);
        } else if constexpr (IS_UTF32<TARGET>) {
            return ConvertFixed<V, FixedToUtf32<IS_BIG_ENDIAN<TARGET>>>(io_source, io_target);
        } else {
            return ConvertFixed<V, FixedToSingleByte<SetOf<SOURCE>>>(io_source, io_target);
        }
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
