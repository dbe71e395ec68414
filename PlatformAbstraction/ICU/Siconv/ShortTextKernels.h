/// The bodies of ShortText.h that need more than SSE2. Declarations only, because files that are
/// compiled for a level include this.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_SHORTTEXTKERNELS_H
#define PLATFORMABSTRACTION_ICU_SICONV_SHORTTEXTKERNELS_H

#include "PlatformAbstraction/ICU/ShortText.h"

namespace Orska::Support::Siconv {

std::int64_t ShortUtf16ToUtf8_SSE42(std::u16string_view in_text, char* out_buffer,
                                    std::int64_t in_capacity) noexcept;
std::int64_t ShortUtf8ToUtf16_SSE42(std::string_view in_bytes, char16_t* out_units) noexcept;

}  // namespace Orska::Support::Siconv

#endif
