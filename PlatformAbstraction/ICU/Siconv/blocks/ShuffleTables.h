/// Byte shuffles that close the gaps in a vector, and how many bytes they keep. Read-only; used by
/// the kernels of every level.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_SHUFFLETABLES_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_SHUFFLETABLES_H

#include <cstdint>

#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"

namespace Orska::Support::Siconv {

struct ShuffleTable {
    alignas(64) std::uint8_t m_bytes[256][16];
};

struct ByteTable {
    alignas(64) std::uint8_t m_bytes[256];
};

/// Bits set in a byte, for processors without POPCNT.
ORSKA_TABLE ByteTable BIT_COUNT;

/// Keeps those of eight 16-bit lanes whose bit is set.
ORSKA_TABLE ShuffleTable COMPRESS_UNITS;

/// Keeps those of eight bytes whose bit is set. The second half of a row is the same for bytes 8 to
/// 15; use it with a separate row.
ORSKA_TABLE ShuffleTable COMPRESS_BYTES;

/// For eight 16-bit lanes of two UTF-8 bytes: a lane with its bit set keeps only the first.
ORSKA_TABLE ShuffleTable PACK_UTF8_2;

/// For four 32-bit lanes with, from the low byte on, the bytes of a UTF-8 sequence of three and the
/// single byte of a code point below 80. Bits 0 to 3 of the index: the lane keeps its last byte;
/// bits 4 to 7: it is below 800. So 1 and 1 keeps byte 3, 0 and 1 keeps bytes 1 and 2, 0 and 0
/// keeps bytes 0 to 2. The last byte of a row, after those of the text, is how many it keeps.
ORSKA_TABLE ShuffleTable PACK_UTF8_3;

/// For four 32-bit lanes whose last bytes are a UTF-8 sequence. Bits 0 to 3 and 4 to 7 of the
/// index: 1 and 1 keeps one byte, 0 and 1 two, 0 and 0 three, 1 and 0 four.
ORSKA_TABLE ShuffleTable PACK_UTF8_4;

/// A shuffle when loaded from byte N on: byte N and those after it move down to 0, zeros follow.
struct MoveTable {
    std::uint8_t m_bytes[32];
};
ORSKA_TABLE MoveTable MOVE_DOWN;

/// How many bytes a row of PACK_UTF8_4 keeps.
ORSKA_TABLE ByteTable PACKED_SIZE;

}  // namespace Orska::Support::Siconv

#endif
