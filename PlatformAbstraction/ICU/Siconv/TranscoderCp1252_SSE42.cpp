// From cp1252 with the instructions up to SSE4.2 and POPCNT.
#include "PlatformAbstraction/ICU/Siconv/TranscoderFixed_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderToUtf8_Blocks.inc"

namespace Orska::Support::Siconv {

std::int32_t Cp1252ToUtf8_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Cp1252ToUtf8>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16LE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector128, FixedToUtf16<Cp1252Set, false>>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16BE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector128, FixedToUtf16<Cp1252Set, true>>(io_source, io_target);
}

std::int32_t Cp1252ToLatin1_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector128, Cp1252ToLatin1>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
