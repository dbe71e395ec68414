// From UTF-16 with the instructions up to SSE4.2 and POPCNT.
#include "PlatformAbstraction/ICU/Siconv/TranscoderToSingleByte_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderToUtf8_Blocks.inc"

namespace Orska::Support::Siconv {

std::int32_t Utf16LEToUtf8_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf16LEToUtf8>(io_source, io_target);
}

std::int32_t Utf16LEToSingleByte_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf16LEToSingleByte>(io_source, io_target);
}

std::int32_t Utf16BEToUtf8_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf16BEToUtf8>(io_source, io_target);
}

std::int32_t Utf16BEToSingleByte_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf16BEToSingleByte>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
