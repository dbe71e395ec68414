/// Whole strings to bytes of an encoding and back: the steps that the string converters share.
///
/// The faster ways of UnicodeForms.h are taken as far as they go, which is to the end for
/// well-formed text in their encodings; from there on, and for all other encodings, ICU converts,
/// so that the result is always ICU's. The functions hold no state and take no lock.
#ifndef PLATFORMABSTRACTION_ICU_TEXTENCODING_H
#define PLATFORMABSTRACTION_ICU_TEXTENCODING_H

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "PlatformAbstraction/strings/EncodingType.h"

namespace Orska::Support {

/// What an encoding step has done.
struct EncodedText {
    std::size_t m_units = 0;   ///< of the text, from its start
    std::int64_t m_bytes = 0;  ///< written, whole code points only
    bool m_isTruncated = false;

    /// True when nothing is left to do: all units are done, or no more of them fit.
    bool IsFinished(std::u16string_view in_text) const noexcept {
        return m_isTruncated || m_units == in_text.size();
    }
};

/// More bytes than a text takes in any encoding. Buffers may be longer than memory is, so where
/// they end cannot always be computed; with this their length is cut first.
constexpr std::int64_t GetMostBytes(std::u16string_view in_text) noexcept {
    return 16 * (static_cast<std::int64_t>(in_text.size()) + 1);
}

/// Encodes from the start as far as no ICU is needed. Behind the bytes it writes nothing, except
/// zeros in place of a code point that did not fit.
/// @param in_capacity  bytes
EncodedText EncodeDirectly(std::u16string_view in_text, char* out_buffer, std::int64_t in_capacity,
                           EncodingType in_encoding) noexcept;

/// Encodes with ICU: the whole text, ended in the encoding's initial state, or else the most whole
/// code points that fit together with what ends them. The rest of the buffer is then zeros.
/// @param io_converter  in any state, as in the functions below; nothing of it reaches the result
/// @param out_attempts  how many conversions it took, counting one that failed
EncodedText EncodeThroughIcu(UConverter& io_converter, std::u16string_view in_text,
                             char* out_buffer, std::int64_t in_capacity, int& out_attempts,
                             UErrorCode& io_status);

/// The bytes that EncodeThroughIcu needs for a whole text.
std::int64_t MeasureThroughIcu(UConverter& io_converter, std::u16string_view in_text,
                               UErrorCode& io_status);

/// Decodes from the start as far as no ICU is needed.
/// @param out_text  its text is replaced
/// @return bytes used
/// @throws std::bad_alloc
std::uint64_t DecodeDirectly(std::string_view in_bytes, EncodingType in_encoding,
                             icu::UnicodeString& out_text);

/// Decodes with ICU and appends.
void DecodeThroughIcu(UConverter& io_converter, std::string_view in_bytes,
                      icu::UnicodeString& io_text, UErrorCode& io_status);

/// True when the bytes are well-formed text of a direct encoding (see DecodeDirectly).
bool IsWellFormed(std::string_view in_bytes, EncodingType in_encoding) noexcept;

}  // namespace Orska::Support

#endif
