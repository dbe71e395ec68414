// From UTF-32 with the instructions up to SSE4.2 and POPCNT.
#include "PlatformAbstraction/ICU/Siconv/TranscoderToUtf8_Blocks.inc"

namespace Orska::Support::Siconv {

std::int32_t Utf32LEToUtf8_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf32LEToUtf8>(io_source, io_target);
}

std::int32_t Utf32BEToUtf8_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf32BEToUtf8>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
