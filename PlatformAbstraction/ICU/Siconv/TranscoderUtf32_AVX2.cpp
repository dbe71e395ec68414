// From UTF-32 with the instructions up to AVX2.
#include "PlatformAbstraction/ICU/Siconv/TranscoderToUtf8_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderVector_256.inc"

namespace Orska::Support::Siconv {

std::int32_t Utf32LEToUtf8_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Utf32LEToUtf8>(io_source, io_target);
}

std::int32_t Utf32BEToUtf8_AVX2(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return Convert<Vector256, Utf32BEToUtf8>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
