// From latin1 with the instructions up to AVX-512 VBMI2.
#include "PlatformAbstraction/ICU/Siconv/TranscoderSingleByte_512.inc"

namespace Orska::Support::Siconv {

namespace {

template <bool IS_BIG>
struct Latin1ToUtf32 {
    static constexpr std::uint32_t UNIT = 4;

    static ORSKA_INLINE void GetParts(__m512i in_bytes, __m512i (&out_parts)[UNIT]) {
        Widen32<IS_BIG>(in_bytes, out_parts);
    }
};

}  // namespace

std::int32_t Latin1ToUtf8_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertText<SingleByteToUtf8Windows<Latin1Bytes>>(io_source, io_target);
}

std::int32_t Latin1ToUtf16LE_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed512<SingleByteToUtf16<Latin1Bytes, false>>(io_source, io_target);
}

std::int32_t Latin1ToUtf16BE_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed512<SingleByteToUtf16<Latin1Bytes, true>>(io_source, io_target);
}

std::int32_t Latin1ToUtf32LE_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed512<Latin1ToUtf32<false>>(io_source, io_target);
}

std::int32_t Latin1ToUtf32BE_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed512<Latin1ToUtf32<true>>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
