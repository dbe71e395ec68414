/// Converts short texts between UTF-16 in memory and the driver manager's Unicode encodings, whole
/// or not at all. Starting a general conversion costs more than converting a name or value of a few
/// code units. If a text is refused here, the caller uses the general conversion.
///
/// The functions hold no state; any thread may call them.
#ifndef PLATFORMABSTRACTION_ICU_SHORTTEXT_H
#define PLATFORMABSTRACTION_ICU_SHORTTEXT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "../strings/EncodingType.h"

namespace Orska::Support {

class orska_wstring;

constexpr std::size_t MOST_SHORT_UNITS = 32;  ///< UTF-16 code units of a text to encode
constexpr std::size_t MOST_SHORT_BYTES = 64;  ///< bytes of a text to decode
/// UTF-16 code units that a decoder may write, scratch after the text included.
constexpr std::size_t SHORT_UNITS_ROOM = MOST_SHORT_BYTES + 16;

/// Encodes a text of at most MOST_SHORT_UNITS. Writes nothing after its bytes.
/// @param in_capacity  bytes, not negative
/// @return bytes; -1 when the text is not well-formed or may not fit; the buffer then may hold
///         its start
using ShortEncoder = std::int64_t (*)(std::u16string_view in_text, char* out_buffer,
                                      std::int64_t in_capacity) noexcept;

/// Decodes a text of at most MOST_SHORT_BYTES.
/// @param out_units  room for SHORT_UNITS_ROOM
/// @return code units; -1 when the text is not well-formed
using ShortDecoder = std::int64_t (*)(std::string_view in_bytes, char16_t* out_units) noexcept;

/// Returns the function for an encoding on this processor. If there is none, it refuses every text.
ShortEncoder GetShortEncoder(EncodingType in_encoding) noexcept;
ShortDecoder GetShortDecoder(EncodingType in_encoding) noexcept;

/// Encodes a text if it is short.
/// @return as ShortEncoder
inline std::int64_t EncodeShortText(std::u16string_view in_text, ShortEncoder in_encoder,
                                    char* out_buffer, std::int64_t in_capacity) noexcept {
    return in_text.size() <= MOST_SHORT_UNITS ? in_encoder(in_text, out_buffer, in_capacity) : -1;
}

/// Sets a string to the text of bytes, if they are short. The bytes may be in the string itself.
/// @return false, with nothing changed, when they are too long or the decoder refuses them
/// @throws std::bad_alloc
bool DecodeShortText(std::string_view in_bytes, ShortDecoder in_decoder, orska_wstring& out_result);

}  // namespace Orska::Support

#endif
