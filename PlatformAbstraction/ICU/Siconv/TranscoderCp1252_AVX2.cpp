// From cp1252 with the instructions up to AVX2.
#include "PlatformAbstraction/ICU/Siconv/TranscoderFixed_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderToUtf8_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderVector_256.inc"

namespace Orska::Support::Siconv {

std::int32_t Cp1252ToUtf8_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Cp1252ToUtf8>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16LE_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector256, FixedToUtf16<Cp1252Set, false>>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16BE_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector256, FixedToUtf16<Cp1252Set, true>>(io_source, io_target);
}

std::int32_t Cp1252ToLatin1_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector256, Cp1252ToLatin1>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
