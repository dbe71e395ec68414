/// The bodies that the transcoder chooses from: for each pair the scalar one and those for a
/// processor level. Declarations only, because files that are compiled for a level include this.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_TRANSCODERKERNELS_H
#define PLATFORMABSTRACTION_ICU_SICONV_TRANSCODERKERNELS_H

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

namespace Orska::Support::Siconv {

#define ORSKA_TRANSCODER(name) \
    std::int32_t name(TranscoderSource& io_source, TranscoderTarget& io_target)

// latin1 and cp1252 are one target: see the header.
ORSKA_TRANSCODER(Utf8ToUtf16LE_Scalar);
ORSKA_TRANSCODER(Utf8ToUtf16BE_Scalar);
ORSKA_TRANSCODER(Utf8ToUtf32LE_Scalar);
ORSKA_TRANSCODER(Utf8ToUtf32BE_Scalar);
ORSKA_TRANSCODER(Utf8ToSingleByte_Scalar);
ORSKA_TRANSCODER(Utf16LEToUtf8_Scalar);
ORSKA_TRANSCODER(Utf16LEToSingleByte_Scalar);
ORSKA_TRANSCODER(Utf16BEToUtf8_Scalar);
ORSKA_TRANSCODER(Utf16BEToSingleByte_Scalar);
ORSKA_TRANSCODER(Utf32LEToUtf8_Scalar);
ORSKA_TRANSCODER(Utf32BEToUtf8_Scalar);
ORSKA_TRANSCODER(Latin1ToUtf8_Scalar);
ORSKA_TRANSCODER(Latin1ToUtf16LE_Scalar);
ORSKA_TRANSCODER(Latin1ToUtf16BE_Scalar);
ORSKA_TRANSCODER(Latin1ToUtf32LE_Scalar);
ORSKA_TRANSCODER(Latin1ToUtf32BE_Scalar);
ORSKA_TRANSCODER(Latin1ToCp1252_Scalar);
ORSKA_TRANSCODER(Cp1252ToUtf8_Scalar);
ORSKA_TRANSCODER(Cp1252ToUtf16LE_Scalar);
ORSKA_TRANSCODER(Cp1252ToUtf16BE_Scalar);
ORSKA_TRANSCODER(Cp1252ToLatin1_Scalar);

// What a level has; a level without a body uses the next lower one.
ORSKA_TRANSCODER(Utf8ToUtf16LE_SSSE3);
ORSKA_TRANSCODER(Utf8ToUtf16LE_AVX2);
ORSKA_TRANSCODER(Utf8ToUtf16BE_SSSE3);
ORSKA_TRANSCODER(Utf8ToUtf16BE_AVX2);
ORSKA_TRANSCODER(Utf8ToUtf32LE_SSSE3);
ORSKA_TRANSCODER(Utf8ToUtf32LE_AVX2);
ORSKA_TRANSCODER(Utf8ToUtf32BE_SSSE3);
ORSKA_TRANSCODER(Utf8ToUtf32BE_AVX2);
ORSKA_TRANSCODER(Utf8ToSingleByte_SSSE3);
ORSKA_TRANSCODER(Utf8ToSingleByte_AVX2);

#undef ORSKA_TRANSCODER

}  // namespace Orska::Support::Siconv

#endif
