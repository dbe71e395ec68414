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

template <int SOURCE, int TARGET>
consteval auto SelectWindows() {
    if constexpr (SOURCE == UTF8 && IS_UTF16<TARGET>) {
        return Utf8Windows<WindowUnitsOf16<IS_BIG_ENDIAN<TARGET>>>();
    } else if constexpr (SOURCE == UTF8 && IS_UTF32<TARGET>) {
        return Utf8Windows<WindowUnitsOf32<IS_BIG_ENDIAN<TARGET>>>();
    } else if constexpr (SOURCE == UTF8) {
        return Utf8Windows<WindowUnitsOf8>();
    } else if constexpr (IS_UTF16<SOURCE> && TARGET == UTF8) {
        return Utf16ToUtf8Windows<IS_BIG_ENDIAN<SOURCE>>();
    } else if constexpr (IS_UTF16<SOURCE>) {
        return Utf16ToSingleByteWindows<IS_BIG_ENDIAN<SOURCE>>();
    } else if constexpr (IS_UTF32<SOURCE>) {
        return Utf32ToUtf8Windows<IS_BIG_ENDIAN<SOURCE>>();
    } else {
        return SingleByteToUtf8Windows<WindowSetOf<SOURCE>>();
    }
}

struct WindowForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        if constexpr (SOURCE < LATIN1 || TARGET == UTF8) {
            return ConvertTextByWindows<SOURCE, TARGET, decltype(SelectWindows<SOURCE, TARGET>())>(
                io_source, io_target);
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
