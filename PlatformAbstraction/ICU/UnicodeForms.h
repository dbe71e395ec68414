/// Converts between UTF-16 in memory and bytes of an encoding, without ICU.
///
/// The functions have the form and the contract of the transcoder's (Siconv/Transcoder.h). On valid
/// text they give the same bytes and positions as ICU's converters. So they replace or drop the
/// code points that a single-byte set lacks, as ICU does; the transcoder's functions to those sets
/// are not used. On malformed text they stop; the caller replaces it.
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

/// The most code units that the bytes can become, with the U+FFFD for malformed bytes.
/// @param in_bytes  bytes of the encoding
std::uint64_t GetMostUtf16Units(EncodingType in_encoding, std::uint64_t in_bytes) noexcept;

/// The bytes that a text takes in UTF-8, UTF-16 or UTF-32, a lone surrogate counted as U+FFFD.
/// @return -1 for other encodings
std::int64_t CountEncodedBytes(std::u16string_view in_text, EncodingType in_encoding) noexcept;

}  // namespace Orska::Support

#endif
