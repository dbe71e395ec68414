// From UTF-8 with the instructions up to SSE4.2 and POPCNT.
#include "PlatformAbstraction/ICU/Siconv/TranscoderUtf8_Blocks.inc"

namespace Orska::Support::Siconv {

std::int32_t Utf8ToUtf16LE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf8ToUtf16LE>(io_source, io_target);
}

std::int32_t Utf8ToUtf16BE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf8ToUtf16BE>(io_source, io_target);
}

std::int32_t Utf8ToUtf32LE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf8ToUtf32LE>(io_source, io_target);
}

std::int32_t Utf8ToUtf32BE_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf8ToUtf32BE>(io_source, io_target);
}

std::int32_t Utf8ToSingleByte_SSE42(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector128, Utf8ToSingleByte>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
