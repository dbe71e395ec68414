/// The string type's conversion between bytes and UTF-16 without a platform converter: the same
/// results as the platform's, but without its pools. For an encoding that only ICU has, each call
/// opens a converter. Stateless and thread-safe.
#ifndef PLATFORMABSTRACTION_STRINGCODEC_H
#define PLATFORMABSTRACTION_STRINGCODEC_H

#include <unicode/unistr.h>

#include <cstdint>
#include <string>

#include "PlatformAbstraction/strings/EncodingType.h"

namespace Orska::Support {

constexpr EncodingType WIDE_ENCODING =
    sizeof(wchar_t) == 2 ? EncodingType::ENC_UTF16LE : EncodingType::ENC_UTF32LE;

/// Returns a text object with the text of the bytes; the caller owns it. Bytes that the encoding
/// does not allow become U+FFFD.
/// @param in_lengthInBytes  bytes, at least 0; with 0 the pointer may be null
/// @param in_encoding  a legal value
/// @throws std::bad_alloc; ErrorException "ICUConvErr" when ICU fails altogether
icu::UnicodeString* DecodeText(const char* in_bytes, std::int32_t in_lengthInBytes,
                               EncodingType in_encoding);

/// The bytes of a text, without a terminator. A code point that the encoding lacks becomes the
/// encoding's substitution, or nothing if Unicode says that displays ignore it by default.
/// @param in_encoding  a legal value
std::string EncodeText(const icu::UnicodeString& in_text, EncodingType in_encoding);

/// The text as UTF-16 units; a surrogate without its partner becomes U+FFFD.
std::u16string EncodeUtf16(const icu::UnicodeString& in_text);

/// The text as UTF-16 or UTF-32 units, by the width of `wchar_t`; surrogates as above.
std::wstring EncodeWide(const icu::UnicodeString& in_text);

}  // namespace Orska::Support

#endif
