// From latin1 with the instructions up to SSE4.2 and POPCNT.
#include "PlatformAbstraction/ICU/Siconv/TranscoderFixed_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderToUtf8_Blocks.inc"

namespace Orska::Support::Siconv {

std::int32_t Latin1ToUtf8_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Latin1ToUtf8>(io_source, io_target);
}

std::int32_t Latin1ToUtf16LE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector128, FixedToUtf16<Latin1Set, false>>(io_source, io_target);
}

std::int32_t Latin1ToUtf16BE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector128, FixedToUtf16<Latin1Set, true>>(io_source, io_target);
}

std::int32_t Latin1ToUtf32LE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector128, Latin1ToUtf32<false>>(io_source, io_target);
}

std::int32_t Latin1ToUtf32BE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed<Vector128, Latin1ToUtf32<true>>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
