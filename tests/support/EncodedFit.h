/// The expected bytes of a string in a buffer of some size, computed slowly: ICU encodes every
/// beginning of the text until one fits. Shares no code with the library.
#ifndef TESTS_SUPPORT_ENCODEDFIT_H
#define TESTS_SUPPORT_ENCODEDFIT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformAbstraction/strings/EncodingType.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "tests/support/StreamDriver.h"

namespace Orska::Support::Testing {

/// The beginnings of a text that end between code points, each encoded and ended in the initial
/// state; the empty one first.
std::vector<std::string> EncodeBeginnings(std::u16string_view in_text, EncodingType in_encoding);

/// The longest of them that is no longer than the capacity, in bytes.
const std::string& GetFit(const std::vector<std::string>& in_beginnings, std::size_t in_capacity);

/// A string of these units, lone surrogates included.
orska_wstring MakeString(std::u16string_view in_text);

/// Buffers are filled with this before they are written.
constexpr char FILL = '\x5A';

/// Writes a string into a buffer and returns the bytes without a NUL.
using WriteString = std::function<std::int64_t(const orska_wstring& in_string, char* out_buffer,
                                               std::int64_t in_capacity, bool& out_truncated)>;

/// Writes one text at every capacity from that of a NUL to more than it needs. Fails the test if
/// the result is not the longest beginning that fits, or if other bytes than zeros follow.
/// @param in_nulWidth  bytes of the NUL that is written after the text
void CheckEveryCapacity(const std::u16string& in_text, EncodingType in_encoding,
                        std::size_t in_nulWidth, const WriteString& in_write);

/// Random text of code points of all kinds: ASCII, combining marks, CJK, surrogate pairs, and
/// lone surrogates.
std::u16string MakeRandomText(Random& io_random, std::size_t in_codePoints);

/// Encodings of every kind that truncation has to handle: the Unicode ones, multi-byte ones of up
/// to four bytes, and those with shift states.
extern const std::vector<int> CUT_ENCODINGS;

}  // namespace Orska::Support::Testing

#endif
