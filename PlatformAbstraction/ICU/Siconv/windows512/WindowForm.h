// All pairs with AVX-512 VBMI2: tells which windows convert which pair. Included by the level only;
// everything is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_WINDOWFORM_H
#define PLATFORMABSTRACTION_ICU_SICONV_WINDOWS512_WINDOWFORM_H

#include "PlatformAbstraction/ICU/Siconv/windows512/FromSingleByte.h"
#include "PlatformAbstraction/ICU/Siconv/windows512/FromUtf16.h"
#include "PlatformAbstraction/ICU/Siconv/windows512/FromUtf32.h"
#include "PlatformAbstraction/ICU/Siconv/windows512/FromUtf8.h"

namespace Orska::Support::Siconv {

namespace {

template <int TARGET>
using WindowUnitsOf = TypeOf<TARGET, void, WindowUnitsOf16<IS_BIG_ENDIAN<TARGET>>,
                             WindowUnitsOf32<IS_BIG_ENDIAN<TARGET>>, WindowUnitsOf8>;
template <int SOURCE, int TARGET>
using WindowsOf =
    TypeOf<SOURCE, Utf8Windows<WindowUnitsOf<TARGET>>,
           std::conditional_t<TARGET == UTF8, Utf16ToUtf8Windows<IS_BIG_ENDIAN<SOURCE>>,
                              Utf16ToSingleByteWindows<IS_BIG_ENDIAN<SOURCE>>>,
           Utf32ToUtf8Windows<IS_BIG_ENDIAN<SOURCE>>, SingleByteToUtf8Windows<WindowSetOf<SOURCE>>>;

struct WindowForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        if constexpr (SOURCE < LATIN1 || TARGET == UTF8) {
            return ConvertTextByWindows<SOURCE, TARGET, WindowsOf<SOURCE, TARGET>>(io_source,
                                                                                   io_target);
        } else if constexpr (IS_UTF16<TARGET>) {
            return ConvertFixedByWindows<WindowToUtf16<WindowSetOf<SOURCE>, IS_BIG_ENDIAN<TARGET>>>(
                io_source, io_target);
        } else if constexpr (IS_UTF32<TARGET>) {
            return ConvertFixedByWindows<WindowToUtf32<IS_BIG_ENDIAN<TARGET>>>(io_source,
                                                                               io_target);
        } else {
            return ConvertFixedByWindows<WindowToSingleByte>(io_source, io_target);
        }
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
