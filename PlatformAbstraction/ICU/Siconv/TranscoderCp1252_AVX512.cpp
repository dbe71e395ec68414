// From cp1252 with the instructions up to AVX-512 VBMI2.
#include "PlatformAbstraction/ICU/Siconv/TranscoderSingleByte_512.inc"

namespace Orska::Support::Siconv {

namespace {

// Code points above FF become the substitute.
struct Cp1252ToLatin1 {
    static constexpr std::uint32_t UNIT = 1;

    static ORSKA_INLINE void GetParts(__m512i in_bytes, __m512i (&out_parts)[UNIT]) {
        const std::uint64_t isMapped =
            _mm512_cmplt_epu8_mask(_mm512_xor_si512(in_bytes, All8<0x80>()), All8<0x20>());
        // 81, 8D, 8F, 90 and 9D stay; an index counts by its lowest six bits.
        const __m512i high =
            _mm512_set_epi64(0, 0, 0, 0, 0x1A1A9D1A1A1A1A1A, 0x1A1A1A1A1A1A1A90,
                             static_cast<long long>(0x8F1A8D1A1A1A1A1A), 0x1A1A1A1A1A1A811A);
        out_parts[0] = _mm512_mask_permutexvar_epi8(in_bytes, isMapped, in_bytes, high);
    }
};

}  // namespace

std::int32_t Cp1252ToUtf8_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertText<SingleByteToUtf8Windows<Cp1252Bytes>>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16LE_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed512<SingleByteToUtf16<Cp1252Bytes, false>>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16BE_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed512<SingleByteToUtf16<Cp1252Bytes, true>>(io_source, io_target);
}

std::int32_t Cp1252ToLatin1_AVX512(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return ConvertFixed512<Cp1252ToLatin1>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
