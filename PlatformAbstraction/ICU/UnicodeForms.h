/// Conversion between the UTF-16 that strings are kept in and bytes of an encoding, without ICU.
///
/// The functions have the form and the contract of the transcoder's (Siconv/Transcoder.h). Only
/// encodings are offered for which they give the bytes and positions that ICU's converters give on
/// valid text: where the transcoder would write a substitute, or would not lead a stateful
/// encoding back, ICU is used. On malformed text they stop, so that the caller can go on with ICU
/// from there.
///
/// Tables are constant and functions hold no state; any thread may call them.
#ifndef PLATFORMABSTRACTION_ICU_UNICODEFORMS_H
#define PLATFORMABSTRACTION_ICU_UNICODEFORMS_H

#include <cstdint>
#include <string_view>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"
#include "PlatformAbstraction/strings/EncodingType.h"

namespace Orska::Support {

/// From UTF-16 in memory to a legal encoding; null when only ICU can do it.
TranscoderFunction GetUtf16Encoder(EncodingType in_encoding) noexcept;

/// From a legal encoding to UTF-16 in memory; null when only ICU can do it.
TranscoderFunction GetUtf16Decoder(EncodingType in_encoding) noexcept;

/// How many code units a decoder can give at most.
/// @param in_bytes  bytes of the encoding
std::uint64_t GetMostUtf16Units(EncodingType in_encoding, std::uint64_t in_bytes) noexcept;

/// The bytes that a text takes in UTF-8, UTF-16 or UTF-32, a lone surrogate counted as U+FFFD.
/// @return -1 for other encodings
std::int64_t CountEncodedBytes(std::u16string_view in_text, EncodingType in_encoding) noexcept;

}  // namespace Orska::Support

#endif
