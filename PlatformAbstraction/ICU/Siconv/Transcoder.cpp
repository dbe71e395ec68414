#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

#include "PlatformAbstraction/ICU/Siconv/TranscoderKernels.h"

namespace Orska::Support {

namespace {

using namespace Siconv;

constexpr int INDEX_COUNT = 7;

// The bodies of one pair; a level without one uses the next lower level that has one.
struct Bodies {
    TranscoderFunction m_scalar = nullptr;
    TranscoderFunction m_sse2 = nullptr;
    TranscoderFunction m_ssse3 = nullptr;
    TranscoderFunction m_sse41 = nullptr;
    TranscoderFunction m_sse42 = nullptr;
    TranscoderFunction m_avx2 = nullptr;
    TranscoderFunction m_avx512 = nullptr;
};

constexpr Bodies BODIES[INDEX_COUNT][INDEX_COUNT] = {
    // from UTF-8
    {{},
     {Utf8ToUtf16LE_Scalar, Utf8ToUtf16LE_SSE2, Utf8ToUtf16LE_SSSE3, nullptr, Utf8ToUtf16LE_SSE42,
      Utf8ToUtf16LE_AVX2, Utf8ToUtf16LE_AVX512},
     {Utf8ToUtf16BE_Scalar, Utf8ToUtf16BE_SSE2, Utf8ToUtf16BE_SSSE3, nullptr, Utf8ToUtf16BE_SSE42,
      Utf8ToUtf16BE_AVX2, Utf8ToUtf16BE_AVX512},
     {Utf8ToUtf32LE_Scalar, Utf8ToUtf32LE_SSE2, Utf8ToUtf32LE_SSSE3, nullptr, Utf8ToUtf32LE_SSE42,
      Utf8ToUtf32LE_AVX2, Utf8ToUtf32LE_AVX512},
     {Utf8ToUtf32BE_Scalar, Utf8ToUtf32BE_SSE2, Utf8ToUtf32BE_SSSE3, nullptr, Utf8ToUtf32BE_SSE42,
      Utf8ToUtf32BE_AVX2, Utf8ToUtf32BE_AVX512},
     {Utf8ToSingleByte_Scalar, Utf8ToSingleByte_SSE2, Utf8ToSingleByte_SSSE3, nullptr,
      Utf8ToSingleByte_SSE42, Utf8ToSingleByte_AVX2, Utf8ToSingleByte_AVX512},
     {Utf8ToSingleByte_Scalar, Utf8ToSingleByte_SSE2, Utf8ToSingleByte_SSSE3, nullptr,
      Utf8ToSingleByte_SSE42, Utf8ToSingleByte_AVX2, Utf8ToSingleByte_AVX512}},
    // from UTF-16LE
    {{Utf16LEToUtf8_Scalar, Utf16LEToUtf8_SSE2, Utf16LEToUtf8_SSSE3, nullptr, Utf16LEToUtf8_SSE42,
      Utf16LEToUtf8_AVX2, Utf16LEToUtf8_AVX512},
     {},
     {},
     {},
     {},
     {Utf16LEToSingleByte_Scalar, Utf16LEToSingleByte_SSE2, Utf16LEToSingleByte_SSSE3, nullptr,
      Utf16LEToSingleByte_SSE42, Utf16LEToSingleByte_AVX2, Utf16LEToSingleByte_AVX512},
     {Utf16LEToSingleByte_Scalar, Utf16LEToSingleByte_SSE2, Utf16LEToSingleByte_SSSE3, nullptr,
      Utf16LEToSingleByte_SSE42, Utf16LEToSingleByte_AVX2, Utf16LEToSingleByte_AVX512}},
    // from UTF-16BE
    {{Utf16BEToUtf8_Scalar, Utf16BEToUtf8_SSE2, Utf16BEToUtf8_SSSE3, nullptr, Utf16BEToUtf8_SSE42,
      Utf16BEToUtf8_AVX2, Utf16BEToUtf8_AVX512},
     {},
     {},
     {},
     {},
     {Utf16BEToSingleByte_Scalar, Utf16BEToSingleByte_SSE2, Utf16BEToSingleByte_SSSE3, nullptr,
      Utf16BEToSingleByte_SSE42, Utf16BEToSingleByte_AVX2, Utf16BEToSingleByte_AVX512},
     {Utf16BEToSingleByte_Scalar, Utf16BEToSingleByte_SSE2, Utf16BEToSingleByte_SSSE3, nullptr,
      Utf16BEToSingleByte_SSE42, Utf16BEToSingleByte_AVX2, Utf16BEToSingleByte_AVX512}},
    // from UTF-32LE
    {{Utf32LEToUtf8_Scalar, Utf32LEToUtf8_SSE2, nullptr, Utf32LEToUtf8_SSE41, Utf32LEToUtf8_SSE42,
      Utf32LEToUtf8_AVX2, Utf32LEToUtf8_AVX512},
     {},
     {},
     {},
     {},
     {},
     {}},
    // from UTF-32BE
    {{Utf32BEToUtf8_Scalar, Utf32BEToUtf8_SSE2, nullptr, Utf32BEToUtf8_SSE41, Utf32BEToUtf8_SSE42,
      Utf32BEToUtf8_AVX2, Utf32BEToUtf8_AVX512},
     {},
     {},
     {},
     {},
     {},
     {}},
    // from latin1
    {{Latin1ToUtf8_Scalar, Latin1ToUtf8_SSE2, Latin1ToUtf8_SSSE3, nullptr, Latin1ToUtf8_SSE42,
      Latin1ToUtf8_AVX2, Latin1ToUtf8_AVX512},
     {Latin1ToUtf16LE_Scalar, Latin1ToUtf16LE_SSE2, Latin1ToUtf16LE_SSSE3, nullptr,
      Latin1ToUtf16LE_SSE42, Latin1ToUtf16LE_AVX2, Latin1ToUtf16LE_AVX512},
     {Latin1ToUtf16BE_Scalar, Latin1ToUtf16BE_SSE2, Latin1ToUtf16BE_SSSE3, nullptr,
      Latin1ToUtf16BE_SSE42, Latin1ToUtf16BE_AVX2, Latin1ToUtf16BE_AVX512},
     {Latin1ToUtf32LE_Scalar, Latin1ToUtf32LE_SSE2, Latin1ToUtf32LE_SSSE3, nullptr,
      Latin1ToUtf32LE_SSE42, Latin1ToUtf32LE_AVX2, Latin1ToUtf32LE_AVX512},
     {Latin1ToUtf32BE_Scalar, Latin1ToUtf32BE_SSE2, Latin1ToUtf32BE_SSSE3, nullptr,
      Latin1ToUtf32BE_SSE42, Latin1ToUtf32BE_AVX2, Latin1ToUtf32BE_AVX512},
     {},
     {Latin1ToCp1252_Scalar}},
    // from cp1252
    {{Cp1252ToUtf8_Scalar, Cp1252ToUtf8_SSE2, Cp1252ToUtf8_SSSE3, nullptr, Cp1252ToUtf8_SSE42,
      Cp1252ToUtf8_AVX2, Cp1252ToUtf8_AVX512},
     {Cp1252ToUtf16LE_Scalar, Cp1252ToUtf16LE_SSE2, Cp1252ToUtf16LE_SSSE3, nullptr,
      Cp1252ToUtf16LE_SSE42, Cp1252ToUtf16LE_AVX2, Cp1252ToUtf16LE_AVX512},
     {Cp1252ToUtf16BE_Scalar, Cp1252ToUtf16BE_SSE2, Cp1252ToUtf16BE_SSSE3, nullptr,
      Cp1252ToUtf16BE_SSE42, Cp1252ToUtf16BE_AVX2, Cp1252ToUtf16BE_AVX512},
     {},
     {},
     {Cp1252ToLatin1_Scalar, Cp1252ToLatin1_SSE2, Cp1252ToLatin1_SSSE3, nullptr,
      Cp1252ToLatin1_SSE42, Cp1252ToLatin1_AVX2, Cp1252ToLatin1_AVX512},
     {}},
};

// Bytes of output for four bytes of source. The single-byte rows equal the UTF-8 row, which makes
// their factor towards UTF-8 1 although a cp1252 byte can take three bytes there: callers rely on
// the table as it stands.
constexpr std::uint8_t RATIO[INDEX_COUNT][INDEX_COUNT] = {
    {4, 8, 8, 16, 16, 4, 4},  //
    {6, 4, 4, 8, 8, 2, 2},    //
    {6, 4, 4, 8, 8, 2, 2},    //
    {4, 4, 4, 4, 4, 1, 1},    //
    {4, 4, 4, 4, 4, 1, 1},    //
    {4, 8, 8, 16, 16, 4, 4},  //
    {4, 8, 8, 16, 16, 4, 4},
};

bool IsIndexPair(int in_source, int in_target) noexcept {
    return in_source >= 0 && in_source < INDEX_COUNT && in_target >= 0 && in_target < INDEX_COUNT;
}

}  // namespace

int GetTranscoderIndex(EncodingType in_encoding) noexcept {
    if (in_encoding == EncodingType::ENC_IBM5348) {
        return static_cast<int>(EncodingType::ENC_CP1252);
    }
    const int value = static_cast<int>(in_encoding);
    return value >= 0 && value < INDEX_COUNT ? value : TRANSCODER_NO_INDEX;
}

TranscoderFunction GetTranscoder(int in_source, int in_target) noexcept {
    return GetTranscoderAtLevel(in_source, in_target, GetCpuLevel());
}

TranscoderFunction GetTranscoderAtLevel(int in_source, int in_target, CpuLevel in_level) noexcept {
    if (!IsIndexPair(in_source, in_target)) {
        return nullptr;
    }
    const Bodies& bodies = BODIES[in_source][in_target];
    if (bodies.m_avx512 != nullptr && in_level >= CpuLevel::AVX512) return bodies.m_avx512;
    if (bodies.m_avx2 != nullptr && in_level >= CpuLevel::AVX2) return bodies.m_avx2;
    if (bodies.m_sse42 != nullptr && in_level >= CpuLevel::SSE42) return bodies.m_sse42;
    if (bodies.m_sse41 != nullptr && in_level >= CpuLevel::SSE41) return bodies.m_sse41;
    if (bodies.m_ssse3 != nullptr && in_level >= CpuLevel::SSSE3) return bodies.m_ssse3;
    return bodies.m_sse2 != nullptr ? bodies.m_sse2 : bodies.m_scalar;
}

TranscoderFunction GetScalarTranscoder(int in_source, int in_target) noexcept {
    return IsIndexPair(in_source, in_target) ? BODIES[in_source][in_target].m_scalar : nullptr;
}

std::int64_t GetTranscoderWorstCase(int in_source, int in_target,
                                    std::uint64_t in_sourceBytes) noexcept {
    if (!IsIndexPair(in_source, in_target)) {
        return -1;
    }
    return static_cast<std::int64_t>(RATIO[in_source][in_target] * in_sourceBytes / 4);
}

}  // namespace Orska::Support
