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

// The bytes of a lane that are kept.
struct Kept {
    int m_first;
    int m_count;
};

// Closes the gaps in PARTS parts of a row, of LANES lanes each. in_get: Kept for a mask and a lane.
template <int LANES, int PARTS, class Get>
constexpr ShuffleTable MakeTable(Get in_get) {
    constexpr int PART = 16 / PARTS;
    ShuffleTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        Row row{table.m_bytes[mask]};
        for (int part = 0; part < PARTS; ++part) {
            for (int lane = 0; lane < LANES; ++lane) {
                const Kept kept = in_get(mask, lane);
                row.Append(PART * part + PART / LANES * lane + kept.m_first, kept.m_count);
            }
            row.Fill(PART * (part + 1));
        }
    }
    return table;
}

constexpr int GetPackedSize(int in_mask, int in_lane) {
    const bool isFirst = HasBit(in_mask, in_lane);
    const bool isSecond = HasBit(in_mask, in_lane + 4);
    return isSecond ? (isFirst ? 1 : 2) : (isFirst ? 4 : 3);
}

constexpr MoveTable MakeMoveDown() {
    MoveTable table{};
    Row row{table.m_bytes};
    row.Append(0, 16);
    row.Fill(32);
    return table;
}

// For each mask the sum of in_get over its lanes.
template <int LANES, class Get>
constexpr ByteTable MakeSums(Get in_get) {
    ByteTable table{};
    for (int mask = 0; mask < 256; ++mask) {
        int sum = 0;
        for (int lane = 0; lane < LANES; ++lane) {
            sum += in_get(mask, lane);
        }
        table.m_bytes[mask] = static_cast<std::uint8_t>(sum);
    }
    return table;
}

constexpr ByteTable PACKED_SIZES = MakeSums<4>(GetPackedSize);

constexpr ShuffleTable MakePackUtf8Of3() {
    ShuffleTable table = MakeTable<4, 1>([](int in_mask, int in_lane) {
        constexpr int FIRST[] = {0, 3, 1, 0, 0};
        const int size = GetPackedSize(in_mask, in_lane);
        return Kept{FIRST[size], size};
    });
    for (int mask = 0; mask < 256; ++mask) {
        table.m_bytes[mask][15] = PACKED_SIZES.m_bytes[mask];
    }
    return table;
}

}  // namespace

constexpr ShuffleTable COMPRESS_UNITS = MakeTable<8, 1>([](int in_mask, int in_lane) {
    return Kept{0, HasBit(in_mask, in_lane) ? 2 : 0};
});
constexpr ShuffleTable COMPRESS_BYTES = MakeTable<8, 2>([](int in_mask, int in_lane) {
    return Kept{0, HasBit(in_mask, in_lane) ? 1 : 0};
});
constexpr ShuffleTable PACK_UTF8_2 = MakeTable<8, 1>([](int in_mask, int in_lane) {
    return Kept{0, HasBit(in_mask, in_lane) ? 1 : 2};
});
constexpr ShuffleTable PACK_UTF8_3 = MakePackUtf8Of3();
constexpr ShuffleTable PACK_UTF8_4 = MakeTable<4, 1>([](int in_mask, int in_lane) {
    const int size = GetPackedSize(in_mask, in_lane);
    return Kept{4 - size, size};
});

constexpr ByteTable PACKED_SIZE = PACKED_SIZES;
constexpr MoveTable MOVE_DOWN = MakeMoveDown();
constexpr ByteTable BIT_COUNT = MakeSums<8>(HasBit);

}  // namespace Orska::Support::Siconv
