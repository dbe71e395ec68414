// From UTF-8 with the instructions up to SSSE3.
#include "PlatformAbstraction/ICU/Siconv/TranscoderUtf8_Blocks.inc"
#include "PlatformAbstraction/ICU/Siconv/TranscoderVector_128.inc"

namespace Orska::Support::Siconv {

std::int32_t Utf8ToUtf16LE_SSSE3(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertUtf8<Vector128, ToUtf16LE>(io_source, io_target);
}

std::int32_t Utf8ToUtf16BE_SSSE3(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertUtf8<Vector128, ToUtf16BE>(io_source, io_target);
}

std::int32_t Utf8ToUtf32LE_SSSE3(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertUtf8<Vector128, ToUtf32LE>(io_source, io_target);
}

std::int32_t Utf8ToUtf32BE_SSSE3(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertUtf8<Vector128, ToUtf32BE>(io_source, io_target);
}

std::int32_t Utf8ToSingleByte_SSSE3(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertUtf8<Vector128, ToSingleByte>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
