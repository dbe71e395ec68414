/// The texts of the transcoding benchmark: natural mixes of code points, always the same.
#ifndef BENCH_TRANSCODETEXTS_H
#define BENCH_TRANSCODETEXTS_H

#include <cstddef>
#include <string>
#include <vector>

namespace Orska::Bench {

/// Pieces of text in one encoding, converted one after another.
struct TextPieces {
    std::vector<std::string> m_pieces;
    std::size_t m_bytes = 0;           ///< of all pieces
    std::size_t m_longest = 0;         ///< bytes
    std::vector<std::size_t> m_rooms;  ///< bytes of the target of each piece; empty: all of it
};

/// ascii; latin (one letter in eight has an accent); cyrgr (Cyrillic and Greek words); cjk; emoji;
/// w1252 (English with the quotes, dashes and currency signs of cp1252).
const std::vector<std::string>& GetTextNames();

/// "utf8", "utf16le", "utf16be", "utf32le", "utf32be", "latin1", "cp1252", by transcoder index.
const char* GetEncodingName(int in_index);

/// True if an encoding has all code points of a text.
bool CanHold(int in_encoding, const std::string& in_text);

/// @param in_size  bytes of a piece, padded with spaces; 0: lengths of 8 to 64 in random order
TextPieces MakePieces(const std::string& in_text, int in_encoding, std::size_t in_size);

}  // namespace Orska::Bench

#endif
