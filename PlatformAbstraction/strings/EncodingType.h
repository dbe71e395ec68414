/// The enumeration of the 119 encodings. A value is an index into the tables of EncodingInfo.
#ifndef PLATFORMABSTRACTION_ENCODINGTYPE_H
#define PLATFORMABSTRACTION_ENCODINGTYPE_H

#include <cstdint>

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

/// Names one byte encoding. Any value from 0 to ENCODING_COUNT - 1 is legal; the commonly used ones
/// have enumerators, the others are reached through ICUUtils::GetEncodingEnum or by number.
enum class EncodingType : std::int32_t {
    ENC_NONE = -1,
    ENC_UTF8 = 0,
    ENC_UTF16LE = 1,
    ENC_UTF16BE = 2,
    ENC_UTF32LE = 3,
    ENC_UTF32BE = 4,
    ENC_LATIN1 = 5,
    ENC_CP1252 = 6,
    ENC_US_ASCII = 7,
    ENC_IBM5348 = 96,  ///< the cp1252 variant that the transcoder treats as cp1252
};

/// How many encodings there are; legal values are below this.
constexpr std::int32_t ENCODING_COUNT = 119;

}  // namespace Orska::Support

#endif
