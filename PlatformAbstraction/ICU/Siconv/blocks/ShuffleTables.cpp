#include "PlatformAbstraction/ICU/Siconv/blocks/ShuffleTables.h"

namespace Orska::Support::Siconv {

namespace {

constexpr std::uint8_t UNUSED = 0x80;  // the shuffle writes zero

// Builds a row by appending byte numbers.
struct Row {
    std::uint8_t* m_row;
    int m_size = 0;

    constexpr void Append(int in_first, int in_count) {
        for (int i = 0; i < in_count; ++i) {
            m_row[m_size++] = static_cast<std::uint8_t>(in_first + i);
        }
    }
    constexpr void Fill(int in_end) {
        while (m_size < in_end) {
            m_row[m_size++] = UNUSED;
        }
    }
};

constexpr bool HasBit(int in_mask, int in_bit) { return ((in_mask >> in_bit) & 1) != 0; }

constexpr ShuffleTable MakeCompressUnits() {
    ShuffleTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        Row row{table.m_bytes[mask]};
        for (int lane = 0; lane < 8; ++lane) {
            row.Append(2 * lane, HasBit(mask, lane) ? 2 : 0);
        }
        row.Fill(16);
    }
    return table;
}

constexpr ShuffleTable MakeCompressBytes() {
    ShuffleTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        Row row{table.m_bytes[mask]};
        for (int half = 0; half < 2; ++half) {
            for (int lane = 0; lane < 8; ++lane) {
                row.Append(8 * half + lane, HasBit(mask, lane) ? 1 : 0);
            }
            row.Fill(8 * (half + 1));
        }
    }
    return table;
}

constexpr ShuffleTable MakePackUtf8Of2() {
    ShuffleTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        Row row{table.m_bytes[mask]};
        for (int lane = 0; lane < 8; ++lane) {
            row.Append(2 * lane, HasBit(mask, lane) ? 1 : 2);
        }
        row.Fill(16);
    }
    return table;
}

constexpr int GetPackedSize(int in_mask, int in_lane) {
    const bool isFirst = HasBit(in_mask, in_lane);
    const bool isSecond = HasBit(in_mask, in_lane + 4);
    return isSecond ? (isFirst ? 1 : 2) : (isFirst ? 4 : 3);
}

constexpr ShuffleTable MakePackUtf8Of3() {
    constexpr int FIRST[] = {0, 3, 1, 0, 0};
    ShuffleTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        Row row{table.m_bytes[mask]};
        for (int lane = 0; lane < 4; ++lane) {
            const int size = GetPackedSize(mask, lane);
            row.Append(4 * lane + FIRST[size], size);
        }
        row.Fill(16);
    }
    return table;
}

constexpr ShuffleTable MakePackUtf8Of4() {
    ShuffleTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        Row row{table.m_bytes[mask]};
        for (int lane = 0; lane < 4; ++lane) {
            const int size = GetPackedSize(mask, lane);
            row.Append(4 * lane + 4 - size, size);
        }
        row.Fill(16);
    }
    return table;
}

constexpr MoveTable MakeMoveDown() {
    MoveTable table{};
    Row row{table.m_bytes};
    row.Append(0, 16);
    row.Fill(32);
    return table;
}

constexpr ByteTable MakeBitCount() {
    ByteTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        for (int bit = 0; bit < 8; ++bit) {
            table.m_bytes[mask] =
                static_cast<std::uint8_t>(table.m_bytes[mask] + HasBit(mask, bit));
        }
    }
    return table;
}

constexpr ByteTable MakePackedSize() {
    ByteTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        for (int lane = 0; lane < 4; ++lane) {
            table.m_bytes[mask] =
                static_cast<std::uint8_t>(table.m_bytes[mask] + GetPackedSize(mask, lane));
        }
    }
    return table;
}

}  // namespace

constexpr ShuffleTable COMPRESS_UNITS = MakeCompressUnits();
constexpr ShuffleTable COMPRESS_BYTES = MakeCompressBytes();
constexpr ShuffleTable PACK_UTF8_2 = MakePackUtf8Of2();
constexpr ShuffleTable PACK_UTF8_3 = MakePackUtf8Of3();
constexpr ShuffleTable PACK_UTF8_4 = MakePackUtf8Of4();

constexpr MoveTable MOVE_DOWN = MakeMoveDown();
constexpr ByteTable BIT_COUNT = MakeBitCount();
constexpr ByteTable PACKED_SIZE = MakePackedSize();

}  // namespace Orska::Support::Siconv
