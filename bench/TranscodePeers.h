/// Ours and the peers of the transcoding benchmark as functions of one type: each converts one
/// piece of text after another into the same target and returns the bytes written for the last one.
/// The loop over the pieces is inside, so that a piece costs one direct call.
#ifndef BENCH_TRANSCODEPEERS_H
#define BENCH_TRANSCODEPEERS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "bench/TranscodeTexts.h"

namespace Orska::Bench {

constexpr std::size_t FAILED = ~std::size_t{0};

/// @param in_room  bytes of the target, enough for the longest piece
/// @return bytes, or FAILED
using Conversion =
    std::function<std::size_t(const TextPieces& in_pieces, char* out_to, std::size_t in_room)>;

struct Peer {
    std::string m_who;
    Conversion m_convert;
};

/// Ours at the level in use and at forced levels; ICU and iconv with converters that stay open;
/// memcpy of the source as the bound; simdutf at its own choice and at forced levels, when built
/// with it.
std::vector<Peer> GetPeers(int in_source, int in_target);

/// Converts into a target that is exactly as large as the output. Users of simdutf count the
/// output first.
std::vector<Peer> GetExactPeers(int in_source, int in_target);

/// Converts UTF-8 to UTF-16LE from source pieces of a size into targets of a size. A code point
/// that is cut off goes to the next piece. Users of simdutf trim each piece to what surely fits.
std::vector<Peer> GetStreamingPeers(std::size_t in_pieceSize, std::size_t in_targetSize);

}  // namespace Orska::Bench

#endif
