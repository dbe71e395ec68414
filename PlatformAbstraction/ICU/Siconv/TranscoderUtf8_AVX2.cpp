// From UTF-8 with the instructions up to AVX2.
#include "PlatformAbstraction/ICU/Siconv/TranscoderUtf8_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderVector_256.inc"

namespace Orska::Support::Siconv {

std::int32_t Utf8ToUtf16LE_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Utf8ToUtf16LE>(io_source, io_target);
}

std::int32_t Utf8ToUtf16BE_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Utf8ToUtf16BE>(io_source, io_target);
}

std::int32_t Utf8ToUtf32LE_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Utf8ToUtf32LE>(io_source, io_target);
}

std::int32_t Utf8ToUtf32BE_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Utf8ToUtf32BE>(io_source, io_target);
}

std::int32_t Utf8ToSingleByte_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Utf8ToSingleByte>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
