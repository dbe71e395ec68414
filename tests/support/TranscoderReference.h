/// A slow, obvious reference for the transcoder: it reads code points one by one into a list and
/// writes them one by one. Shares no code with the library; UTF-8 is read and written by ICU's
/// macros.
#ifndef TESTS_SUPPORT_TRANSCODERREFERENCE_H
#define TESTS_SUPPORT_TRANSCODERREFERENCE_H

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

namespace Orska::Support::Testing {

/// The transcoder's indexes.
enum Index { UTF8, UTF16LE, UTF16BE, UTF32LE, UTF32BE, LATIN1, CP1252 };

const char* GetIndexName(int in_index);

struct ReferenceResult {
    std::int32_t m_result = 0;
    std::size_t m_used = 0;  ///< bytes of the source
    std::string m_bytes;     ///< the output
};

/// @param in_room  bytes of the target
ReferenceResult ReferenceTranscode(int in_source, int in_target, std::string_view in_bytes,
                                   std::size_t in_room);

/// Writes a valid or invalid code point in an encoding; a single-byte encoding gets the low byte.
std::string EncodeCodePoint(char32_t in_codePoint, int in_encoding);
std::string Encode(const std::u32string& in_text, int in_encoding);

/// One body of one pair that this processor can run.
struct Kernel {
    int m_source;
    int m_target;
    std::string m_name;  ///< as "UTF8_UTF16LE_AVX2"
    TranscoderFunction m_function;

    friend void PrintTo(const Kernel& in_kernel, std::ostream* out) { *out << in_kernel.m_name; }
};

/// The scalar body of every pair, and each different body of this processor's levels.
std::vector<Kernel> GetKernels();

/// Kinds of text, by the code points they hold: ASCII only, Latin with some accents, Cyrillic and
/// Greek, Chinese and Japanese, emoji, cp1252 punctuation, and all mixed.
enum class TextKind { ASCII, LATIN, CYRGR, CJK, EMOJI, W1252, MIXED };
constexpr TextKind TEXT_KINDS[] = {TextKind::ASCII, TextKind::LATIN, TextKind::CYRGR, TextKind::CJK,
                                   TextKind::EMOJI, TextKind::W1252, TextKind::MIXED};

/// Valid text of a kind, the same for the same seed. With a single-byte encoding: its bytes.
std::string MakeText(TextKind in_kind, std::size_t in_codePoints, unsigned in_seed,
                     int in_encoding);

}  // namespace Orska::Support::Testing

#endif
