/// The string type's own conversion between bytes and UTF-16, used when no platform converter is
/// there: the text ICU gives for the same bytes, malformed ones included.
#ifndef PLATFORMABSTRACTION_STRINGCODEC_H
#define PLATFORMABSTRACTION_STRINGCODEC_H

#include <unicode/unistr.h>

#include <cstdint>
#include <string>

#include "PlatformAbstraction/EncodingType.h"

namespace Orska::Support {

/// A new text object, which the caller owns, with the text of the bytes. Bytes that the encoding
/// does not allow become U+FFFD.
/// @param in_lengthInBytes  at most INT32_MAX
/// @throws std::bad_alloc
icu::UnicodeString* DecodeText(const char* in_bytes, std::int32_t in_lengthInBytes,
                               EncodingType in_encoding);

/// The bytes of a text, without a terminator. What the encoding lacks becomes its substitution.
std::string EncodeText(const icu::UnicodeString& in_text, EncodingType in_encoding);

}  // namespace Orska::Support

#endif
