// Operations on sixteen bytes, with instructions up to SSSE3, or better ones if the including file
// is compiled for them. Included by kernels only; everything is local to the including file, so no
// copy compiled for a higher level can be used elsewhere.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_VECTOR128_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_VECTOR128_H

#include <immintrin.h>

#include <cstdint>

#include "PlatformAbstraction/ICU/Siconv/blocks/ShuffleTables.h"

#define ORSKA_INLINE inline __attribute__((always_inline))
#define ORSKA_INLINE_LAMBDA __attribute__((always_inline))

namespace Orska::Support::Siconv {

namespace {

template <class Word>
ORSKA_INLINE Word Read(const char* in_at) {
    Word word;
    __builtin_memcpy(&word, in_at, sizeof word);
    return word;
}

#ifdef __AVX2__
// gcc would rebuild a constant vector at each use, in three instructions. Inline assembly that
// loads it from here prevents that.
struct Constant {
    alignas(32) std::uint32_t m_words[8];
};
template <std::uint32_t VALUE>
constexpr Constant CONSTANT = {{VALUE, VALUE, VALUE, VALUE, VALUE, VALUE, VALUE, VALUE}};
#endif

// A target for writers that must not write past m_end; m_room bytes are left. Output that does not
// fit is dropped and makes m_room negative.
struct BoundedTo {
    char* m_end;
    std::int64_t m_room;
};

// The operations that both vectors have, within lanes of 128 bits. Comparisons return all ones or
// zeros. AndNot returns the bits of b that are not set in a. MultiplyAdd returns sums of
// neighbouring products; the first factors of MultiplyAdd8 are unsigned. The pack operations, for
// values of 0, all ones or up to 255, work lane by lane: first a, then b.
#define ORSKA_OPERATION(NAME, INTRINSIC) \
    static ORSKA_INLINE Type NAME(Type in_a, Type in_b) { return INTRINSIC(in_a, in_b); }
#define ORSKA_SHIFT(NAME, INTRINSIC)               \
    template <int COUNT>                           \
    static ORSKA_INLINE Type NAME(Type in_value) { \
        return INTRINSIC(in_value, COUNT);         \
    }
#define ORSKA_OPERATIONS(PREFIX, SUFFIX)                       \
    ORSKA_OPERATION(And, PREFIX##_and_##SUFFIX)                \
    ORSKA_OPERATION(AndNot, PREFIX##_andnot_##SUFFIX)          \
    ORSKA_OPERATION(Or, PREFIX##_or_##SUFFIX)                  \
    ORSKA_OPERATION(Equal8, PREFIX##_cmpeq_epi8)               \
    ORSKA_OPERATION(Equal16, PREFIX##_cmpeq_epi16)             \
    ORSKA_OPERATION(Equal32, PREFIX##_cmpeq_epi32)             \
    ORSKA_OPERATION(GreaterSigned8, PREFIX##_cmpgt_epi8)       \
    ORSKA_OPERATION(GreaterSigned32, PREFIX##_cmpgt_epi32)     \
    ORSKA_OPERATION(Add8, PREFIX##_add_epi8)                   \
    ORSKA_OPERATION(Add16, PREFIX##_add_epi16)                 \
    ORSKA_OPERATION(Add32, PREFIX##_add_epi32)                 \
    ORSKA_OPERATION(MultiplyAdd8, PREFIX##_maddubs_epi16)      \
    ORSKA_OPERATION(MultiplyAdd16, PREFIX##_madd_epi16)        \
    ORSKA_OPERATION(AddSaturated8, PREFIX##_adds_epu8)         \
    ORSKA_OPERATION(Xor, PREFIX##_xor_##SUFFIX)                \
    ORSKA_OPERATION(SubtractSaturated8, PREFIX##_subs_epu8)    \
    ORSKA_OPERATION(InterleaveLow8, PREFIX##_unpacklo_epi8)    \
    ORSKA_OPERATION(InterleaveHigh8, PREFIX##_unpackhi_epi8)   \
    ORSKA_OPERATION(InterleaveLow16, PREFIX##_unpacklo_epi16)  \
    ORSKA_OPERATION(InterleaveHigh16, PREFIX##_unpackhi_epi16) \
    ORSKA_OPERATION(InterleaveLow32, PREFIX##_unpacklo_epi32)  \
    ORSKA_OPERATION(InterleaveHigh32, PREFIX##_unpackhi_epi32) \
    ORSKA_OPERATION(PackSigned16, PREFIX##_packs_epi16)        \
    ORSKA_OPERATION(PackUnsigned16, PREFIX##_packus_epi16)     \
    ORSKA_OPERATION(PackSigned32, PREFIX##_packs_epi32)        \
    ORSKA_OPERATION(Shuffle, PREFIX##_shuffle_epi8)            \
    ORSKA_SHIFT(ShiftLeft16, PREFIX##_slli_epi16)              \
    ORSKA_SHIFT(ShiftRight16, PREFIX##_srli_epi16)             \
    ORSKA_SHIFT(ShiftLeft32, PREFIX##_slli_epi32)              \
    ORSKA_SHIFT(ShiftRight32, PREFIX##_srli_epi32)

// Built from the operations of the vectors below.
template <class V>
struct VectorBase {
    template <std::uint32_t VALUE>
    static ORSKA_INLINE auto All8() {
        return V::template All32<(VALUE & 0xFF) * 0x01010101U>();
    }
    template <std::uint32_t VALUE>
    static ORSKA_INLINE auto All16() {
        return V::template All32<(VALUE & 0xFFFF) * 0x00010001U>();
    }
    // Packs the low halves of the 32-bit units of two vectors, in text order.
    template <class Type>
    static ORSKA_INLINE Type PackUnits32(Type in_first, Type in_second) {
        return V::JoinHalves(
            V::Shuffle(in_first, V::RepeatLane(0x05040100, 0x0D0C0908, ~0U, ~0U)),
            V::Shuffle(in_second, V::RepeatLane(~0U, ~0U, 0x05040100, 0x0D0C0908)));
    }
    // Joins the bytes of 16-bit units in the order of the text, lane by lane, the low half first.
    template <bool IS_BIG, class Type>
    static ORSKA_INLINE void Interleave8(Type in_low, Type in_high, Type (&out_units)[2]) {
        out_units[0] = V::InterleaveLow8(IS_BIG ? in_high : in_low, IS_BIG ? in_low : in_high);
        out_units[1] = V::InterleaveHigh8(IS_BIG ? in_high : in_low, IS_BIG ? in_low : in_high);
    }
    // Writes bytes and their high bytes as 16-bit units, in text order.
    template <bool IS_BIG, class Type>
    static ORSKA_INLINE void WriteUnits16(char* out_at, Type in_low, Type in_high) {
        Type units[2];
        Interleave8<IS_BIG>(V::SwapMiddle64(in_low), V::SwapMiddle64(in_high), units);
        V::Store(out_at, units[0]);
        V::Store(out_at + V::SIZE, units[1]);
    }
    // Changes units from the text's byte order to the processor's, or back.
    template <bool IS_BIG, class Type>
    static ORSKA_INLINE Type OrderUnits16(Type in_units) {
        return IS_BIG ? V::Shuffle(in_units,
                                   V::RepeatLane(0x02030001, 0x06070405, 0x0A0B0809, 0x0E0F0C0D))
                      : in_units;
    }
    template <bool IS_BIG, class Type>
    static ORSKA_INLINE Type OrderUnits32(Type in_units) {
        return IS_BIG ? V::Shuffle(in_units,
                                   V::RepeatLane(0x00010203, 0x04050607, 0x08090A0B, 0x0C0D0E0F))
                      : in_units;
    }

    // The writers below store whole lanes: they may write as many bytes as all lanes have, and move
    // the position past the bytes that they keep. To is char*, or BoundedTo if there may not be
    // room for all of it. Masks and indexes have eight bits for each lane.

    // Writes the 16-bit units of InterleaveLow8 and InterleaveHigh8 whose bit is set.
    template <class To, class Type>
    static ORSKA_INLINE void CompressUnits(To& io_at, Type in_low, Type in_high,
                                           std::uint64_t in_keep) {
        CloseUpPair(COMPRESS_UNITS, io_at, in_low, in_high, in_keep,
                    [](std::uint64_t in_bits) { return 2 * V::CountBits(in_bits); });
    }
    // The same, each with two zero bytes after (IS_BIG: before) it.
    template <bool IS_BIG, class To, class Type>
    static ORSKA_INLINE void CompressToUnits32(To& io_at, Type in_low, Type in_high,
                                               std::uint64_t in_keep) {
        PutLanes(CloseUp(COMPRESS_UNITS, in_low, in_keep),
                 CloseUp(COMPRESS_UNITS, in_high, in_keep >> 8), in_keep,
                 [&io_at](auto in_lane, std::uint64_t in_bits) ORSKA_INLINE_LAMBDA {
                     V::template PutWide<IS_BIG>(io_at, in_lane, 4 * V::CountBits(in_bits));
                 });
    }
    // The same with a second unit for each, after (IS_BIG: before) the first.
    template <bool IS_BIG, class To, class Type>
    static ORSKA_INLINE void CompressPairs(To& io_at, Type in_low, Type in_high, Type in_topLow,
                                           Type in_topHigh, std::uint64_t in_keep) {
        Type low[2];
        Type high[2];
        InterleaveKept<IS_BIG>(in_low, in_topLow, in_keep, low);
        InterleaveKept<IS_BIG>(in_high, in_topHigh, in_keep >> 8, high);
        const auto put = [&](auto in_first, auto in_second, int in_lane) ORSKA_INLINE_LAMBDA {
            V::Lane::PutTwo(io_at, in_first, in_second, 4 * V::CountBits(in_keep >> (8 * in_lane)));
        };
        put(V::GetLow(low[0]), V::GetLow(low[1]), 0);
        put(V::GetLow(high[0]), V::GetLow(high[1]), 1);
        if constexpr (V::SIZE == 32) {
            put(V::GetHigh(low[0]), V::GetHigh(low[1]), 2);
            put(V::GetHigh(high[0]), V::GetHigh(high[1]), 3);
        }
    }

    // Writes UTF-8 from 16-bit units of two bytes; units with their bit set in in_isShort keep the
    // first byte. The bits are those of the bytes of PackSigned16(units, units).
    template <class To, class Type>
    static ORSKA_INLINE void PackUtf8Of2(To& io_at, Type in_units, std::uint64_t in_isShort) {
        const Type packed = CloseUp(PACK_UTF8_2, in_units, in_isShort);
        V::Lane::Put(io_at, V::GetLow(packed), 16 - V::CountBits(in_isShort));
        if constexpr (V::SIZE == 32) {
            V::Lane::Put(io_at, V::GetHigh(packed), 16 - V::CountBits(in_isShort >> 16));
        }
    }
    // The same for the units of InterleaveLow8 and InterleaveHigh8, with a bit for each byte.
    template <class To, class Type>
    static ORSKA_INLINE void PackUtf8Of2Pair(To& io_at, Type in_low, Type in_high,
                                             std::uint64_t in_isShort) {
        CloseUpPair(PACK_UTF8_2, io_at, in_low, in_high, in_isShort,
                    [](std::uint64_t in_bits) { return 16 - V::CountBits(in_bits); });
    }
    // Writes UTF-8 from 32-bit units, with an index into the table for each lane.
    template <class To, class Type>
    static ORSKA_INLINE void PackUtf8(const ShuffleTable& in_table, To& io_at, Type in_units,
                                      std::uint64_t in_indexes) {
        const Type packed = CloseUp(in_table, in_units, in_indexes);
        V::Lane::Put(io_at, V::GetLow(packed), PACKED_SIZE.m_bytes[in_indexes & 0xFF]);
        if constexpr (V::SIZE == 32) {
            V::Lane::Put(io_at, V::GetHigh(packed), PACKED_SIZE.m_bytes[in_indexes >> 16 & 0xFF]);
        }
    }
    // The same for the units of InterleaveLow16 and InterleaveHigh16, with an index for each four.
    template <class To, class Type>
    static ORSKA_INLINE void PackUtf8Pair(To& io_at, Type in_low, Type in_high,
                                          std::uint64_t in_indexes) {
        CloseUpPair(PACK_UTF8_3, io_at, in_low, in_high, in_indexes, [](std::uint64_t in_index) {
            return PACK_UTF8_3.m_bytes[in_index & 0xFF][15];
        });
    }
    // The same for two pairs, from the units of InterleaveLow8 and those of InterleaveHigh8.
    template <class To, class Type>
    static ORSKA_INLINE void PackUtf8Pairs(To& io_at, const Type (&in_low)[2],
                                           const Type (&in_high)[2],
                                           const std::uint64_t (&in_indexes)[2]) {
        Type units[4];
        for (int i = 0; i < 2; ++i) {
            units[2 * i] = CloseUp(PACK_UTF8_3, in_low[i], in_indexes[i]);
            units[2 * i + 1] = CloseUp(PACK_UTF8_3, in_high[i], in_indexes[i] >> 8);
        }
        const auto put = [&](auto in_lane, int in_shift, int in_at) ORSKA_INLINE_LAMBDA {
            const std::uint64_t index = in_indexes[in_at / 2] >> (8 * (in_at % 2) + in_shift);
            V::Lane::Put(io_at, in_lane, PACK_UTF8_3.m_bytes[index & 0xFF][15]);
        };
        for (int i = 0; i < 4; ++i) {
            put(V::GetLow(units[i]), 0, i);
        }
        if constexpr (V::SIZE == 32) {
            for (int i = 0; i < 4; ++i) {
                put(V::GetHigh(units[i]), 16, i);
            }
        }
    }
    // The same when all units keep three bytes.
    template <class To, class Type>
    static ORSKA_INLINE void PackUtf8Of3(To& io_at, Type in_low, Type in_high) {
        const Type order = V::RepeatLane(0x04020100, 0x09080605, 0x0E0D0C0A, ~0U);
        PutLanes(V::Shuffle(in_low, order), V::Shuffle(in_high, order), 0,
                 [&io_at](auto in_lane, std::uint64_t)
                     ORSKA_INLINE_LAMBDA { V::Lane::Put(io_at, in_lane, 12); });
    }

private:
    template <class Type>
    static ORSKA_INLINE Type CloseUp(const ShuffleTable& in_table, Type in_units,
                                     std::uint64_t in_rows) {
        return V::Shuffle(in_units, V::LoadRows(in_table, in_rows));
    }
    template <bool IS_BIG, class Type>
    static ORSKA_INLINE void InterleaveKept(Type in_units, Type in_tops, std::uint64_t in_keep,
                                            Type (&out_pairs)[2]) {
        const Type units = CloseUp(COMPRESS_UNITS, in_units, in_keep);
        const Type tops = CloseUp(COMPRESS_UNITS, in_tops, in_keep);
        out_pairs[0] = V::InterleaveLow16(IS_BIG ? tops : units, IS_BIG ? units : tops);
        out_pairs[1] = V::InterleaveHigh16(IS_BIG ? tops : units, IS_BIG ? units : tops);
    }
    // Writes the kept bytes of two vectors. in_getSize: their number for the bits of a lane.
    template <class To, class Type, class GetSize>
    static ORSKA_INLINE void CloseUpPair(const ShuffleTable& in_table, To& io_at, Type in_low,
                                         Type in_high, std::uint64_t in_bits, GetSize in_getSize) {
        PutLanes(CloseUp(in_table, in_low, in_bits), CloseUp(in_table, in_high, in_bits >> 8),
                 in_bits, [&](auto in_lane, std::uint64_t in_row) ORSKA_INLINE_LAMBDA {
                     V::Lane::Put(io_at, in_lane, in_getSize(in_row));
                 });
    }
    // Calls in_put for the lanes of two vectors in the order of the text, each with its bits.
    template <class Type, class Put>
    static ORSKA_INLINE void PutLanes(Type in_low, Type in_high, std::uint64_t in_bits,
                                      Put in_put) {
        in_put(V::GetLow(in_low), in_bits);
        in_put(V::GetLow(in_high), in_bits >> 8);
        if constexpr (V::SIZE == 32) {
            in_put(V::GetHigh(in_low), in_bits >> 16);
            in_put(V::GetHigh(in_high), in_bits >> 24);
        }
    }
};

// Masks have one bit for each byte.
struct Vector128 : VectorBase<Vector128> {
    using Type = __m128i;
    using Lane = Vector128;
    ORSKA_OPERATIONS(_mm, si128)
    static constexpr std::uint32_t SIZE = 16;
    static constexpr std::uint64_t FULL = 0xFFFF;

    static ORSKA_INLINE Type Load(const char* in_at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_at));
    }
    // Loads the first in_size bytes, fewer than SIZE, with zeros after them; reads no others.
    static ORSKA_INLINE Type LoadPart(const char* in_at, std::uint64_t in_size) {
        std::uint64_t low = 0;
        std::uint64_t high = 0;
        if (in_size >= 8) {
            // The bytes that both words have are shifted out of the second.
            low = Read<std::uint64_t>(in_at);
            high = Read<std::uint64_t>(in_at + in_size - 8) >> (8 * (15 - in_size)) >> 8;
        } else if (in_size >= 4) {
            low = Read<std::uint32_t>(in_at) |
                  std::uint64_t{Read<std::uint32_t>(in_at + in_size - 4)} << (8 * (in_size - 4));
        } else if (in_size > 0) {
            low = std::uint64_t{Read<std::uint8_t>(in_at)} |
                  std::uint64_t{Read<std::uint8_t>(in_at + in_size / 2)} << (8 * (in_size / 2)) |
                  std::uint64_t{Read<std::uint8_t>(in_at + in_size - 1)} << (8 * (in_size - 1));
        }
        return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
    }
    static ORSKA_INLINE void Store(char* out_at, Type in_value) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out_at), in_value);
    }
    // Stores the first in_size bytes, fewer than SIZE.
    static ORSKA_INLINE void StorePart(char* out_at, Type in_value, std::uint64_t in_size) {
        const auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(in_value));
        if (in_size >= 8) {
            const Type order = Load(reinterpret_cast<const char*>(MOVE_DOWN.m_bytes + in_size - 8));
            const Type moved = Shuffle(in_value, order);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out_at), in_value);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out_at + in_size - 8), moved);
        } else if (in_size >= 4) {
            const auto first = static_cast<std::uint32_t>(low);
            const auto last = static_cast<std::uint32_t>(low >> (8 * (in_size - 4)));
            __builtin_memcpy(out_at, &first, 4);
            __builtin_memcpy(out_at + in_size - 4, &last, 4);
        } else if (in_size > 0) {
            out_at[0] = static_cast<char>(low);
            out_at[in_size / 2] = static_cast<char>(low >> (8 * (in_size / 2)));
            out_at[in_size - 1] = static_cast<char>(low >> (8 * (in_size - 1)));
        }
    }
    static ORSKA_INLINE Type Zero() { return _mm_setzero_si128(); }
    // A constant in each unit.
    template <std::uint32_t VALUE>
    static ORSKA_INLINE Type All32() {
#ifdef __AVX2__
        Type value;
        __asm__("vmovdqa %1, %0" : "=x"(value) : "m"(CONSTANT<VALUE>));
        return value;
#else
        return _mm_set1_epi32(static_cast<int>(VALUE));
#endif
    }
    // b where the mask is set, else a.
    static ORSKA_INLINE Type Select(Type in_a, Type in_b, Type in_mask) {
#ifdef __SSE4_1__
        return _mm_blendv_epi8(in_a, in_b, in_mask);
#else
        return Or(AndNot(in_mask, in_a), And(in_mask, in_b));
#endif
    }
    // Exchanges the second and the third quarter of a lane.
    static ORSKA_INLINE Type SwapMiddle32(Type in_value) {
        return _mm_shuffle_epi32(in_value, _MM_SHUFFLE(3, 1, 2, 0));
    }
    // Exchanges the halves of two lanes, the second and the third; it keeps a single one.
    static ORSKA_INLINE Type SwapMiddle64(Type in_value) { return in_value; }
    // The four words of a lane.
    static ORSKA_INLINE Type RepeatLane(std::uint32_t in_0, std::uint32_t in_1, std::uint32_t in_2,
                                        std::uint32_t in_3) {
        return _mm_setr_epi32(static_cast<int>(in_0), static_cast<int>(in_1),
                              static_cast<int>(in_2), static_cast<int>(in_3));
    }
    // Loads twelve bytes for each lane; reads four more.
    static ORSKA_INLINE Type LoadTwelves(const char* in_at) { return Load(in_at); }
    // Joins two vectors with 8 bytes in each lane, the first in the low and the second in the high
    // half, in text order.
    static ORSKA_INLINE Type JoinHalves(Type in_first, Type in_second) {
        return Or(in_first, in_second);
    }
    // Packs 16-bit units up to FF of two vectors to bytes, in text order.
    static ORSKA_INLINE Type PackUnits16(Type in_first, Type in_second) {
        return PackUnsigned16(in_first, in_second);
    }
    static ORSKA_INLINE bool IsZero(Type in_value) {
#ifdef __SSE4_1__
        return _mm_testz_si128(in_value, in_value) != 0;
#else
        return _mm_movemask_epi8(_mm_cmpeq_epi8(in_value, _mm_setzero_si128())) == 0xFFFF;
#endif
    }
    static ORSKA_INLINE std::uint64_t GetSignBits(Type in_value) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(in_value));
    }
    // The bytes COUNT places earlier in the text.
    template <int COUNT>
    static ORSKA_INLINE Type Earlier(Type in_value, Type in_before) {
        return _mm_alignr_epi8(in_value, in_before, 16 - COUNT);
    }
    static ORSKA_INLINE std::uint32_t CountBits(std::uint64_t in_byte) {
#ifdef __POPCNT__
        return static_cast<std::uint32_t>(__builtin_popcount(in_byte & 0xFF));
#else
        return BIT_COUNT.m_bytes[in_byte & 0xFF];
#endif
    }
    // Loads a row for each lane.
    static ORSKA_INLINE Type LoadRows(const ShuffleTable& in_table, std::uint64_t in_row) {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(in_table.m_bytes[in_row & 0xFF]));
    }
    static ORSKA_INLINE Type GetLow(Type in_value) { return in_value; }

    static ORSKA_INLINE void Put(char*& io_to, Type in_value, std::uint64_t in_size) {
        Store(io_to, in_value);
        io_to += in_size;
    }
    static ORSKA_INLINE void Put(BoundedTo& io_to, Type in_value, std::uint64_t in_size) {
        PutBehind(io_to, in_value, 0);
        io_to.m_room -= static_cast<std::int64_t>(in_size);
    }
    // The same for the low half only.
    static ORSKA_INLINE void PutLow(char*& io_to, Type in_value, std::uint64_t in_size) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(io_to), in_value);
        io_to += in_size;
    }
    static ORSKA_INLINE void PutLow(BoundedTo& io_to, Type in_value, std::uint64_t in_size) {
        Put(io_to, in_value, in_size);
    }
    static ORSKA_INLINE void PutTwo(char*& io_to, Type in_first, Type in_second,
                                    std::uint64_t in_size) {
        Store(io_to, in_first);
        Store(io_to + SIZE, in_second);
        io_to += in_size;
    }
    static ORSKA_INLINE void PutTwo(BoundedTo& io_to, Type in_first, Type in_second,
                                    std::uint64_t in_size) {
        PutBehind(io_to, in_first, 0);
        PutBehind(io_to, in_second, SIZE);
        io_to.m_room -= static_cast<std::int64_t>(in_size);
    }

    // Widens bytes to units of 2 or 4 bytes.
    template <bool IS_BIG>
    static ORSKA_INLINE void WriteWide16(char* out_at, Type in_bytes) {
#ifdef __AVX2__
        const __m256i units = _mm256_cvtepu8_epi16(in_bytes);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out_at),
                            IS_BIG ? _mm256_slli_epi16(units, 8) : units);
#else
        WriteUnits16<IS_BIG>(out_at, in_bytes, Zero());
#endif
    }
    template <bool IS_BIG>
    static ORSKA_INLINE void WriteWide32(char* out_at, Type in_bytes) {
        WriteUnits32<IS_BIG>(out_at, InterleaveLow8(in_bytes, Zero()));
        WriteUnits32<IS_BIG>(out_at + 32, InterleaveHigh8(in_bytes, Zero()));
    }
    // The same from memory.
    template <bool IS_BIG>
    static ORSKA_INLINE void WriteWide32From(char* out_at, const char* in_from) {
#ifdef __AVX2__
        for (std::uint64_t i = 0; i < 2; ++i) {
            const __m256i units = _mm256_cvtepu8_epi32(
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in_from + 8 * i)));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out_at + 32 * i),
                                IS_BIG ? _mm256_slli_epi32(units, 24) : units);
        }
#else
        WriteWide32<IS_BIG>(out_at, Load(in_from));
#endif
    }

    // Writes 16-bit units, each with two zero bytes after (IS_BIG: before) it.
    template <bool IS_BIG, class To>
    static ORSKA_INLINE void PutWide(To& io_to, Type in_units, std::uint64_t in_size) {
        PutTwo(io_to,
               IS_BIG ? InterleaveLow16(Zero(), in_units) : InterleaveLow16(in_units, Zero()),
               IS_BIG ? InterleaveHigh16(Zero(), in_units) : InterleaveHigh16(in_units, Zero()),
               in_size);
    }

    // Writes 16-bit units of at most 255 as bytes, in text order.
    static ORSKA_INLINE void WriteNarrow16(char* out_at, Type in_units) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out_at), PackUnsigned16(in_units, in_units));
    }
    static ORSKA_INLINE void WriteNarrow32(char* out_at, Type in_units) {
        const Type bytes = Shuffle(in_units, RepeatLane(0x0C080400, ~0U, ~0U, ~0U));
        const int word = _mm_cvtsi128_si32(bytes);
        __builtin_memcpy(out_at, &word, 4);
    }

    // The same for the units with their bit set in in_keep, which has the bits of the bytes of
    // PackSigned16(units, units).
    template <class To>
    static ORSKA_INLINE void CompressNarrow16(To& io_at, Type in_units, std::uint64_t in_keep) {
        const Type kept =
            Shuffle(PackUnsigned16(in_units, in_units), LoadRows(COMPRESS_BYTES, in_keep));
        PutLow(io_at, kept, CountBits(in_keep));
    }

    // Writes the bytes whose bit is set.
    template <class To>
    static ORSKA_INLINE void CompressBytes(To& io_at, Type in_bytes, std::uint64_t in_keep) {
        const Type low = LoadRows(COMPRESS_BYTES, in_keep);
        const Type high = LoadRows(COMPRESS_BYTES, in_keep >> 8);
        const Type kept = Shuffle(in_bytes, _mm_castpd_si128(_mm_shuffle_pd(
                                                _mm_castsi128_pd(low), _mm_castsi128_pd(high), 2)));
        PutLow(io_at, kept, CountBits(in_keep));
        PutLow(io_at, _mm_unpackhi_epi64(kept, kept), CountBits(in_keep >> 8));
    }

private:
    static ORSKA_INLINE void PutBehind(const BoundedTo& in_to, Type in_value,
                                       std::int64_t in_offset) {
        const std::int64_t room = in_to.m_room - in_offset;
        if (room >= SIZE) {
            Store(in_to.m_end - room, in_value);
        } else if (room > 0) {
            StorePart(in_to.m_end - room, in_value, static_cast<std::uint64_t>(room));
        }
    }

    template <bool IS_BIG>
    static ORSKA_INLINE void WriteUnits32(char* out_at, Type in_units) {
        const Type low = InterleaveLow16(in_units, Zero());
        const Type high = InterleaveHigh16(in_units, Zero());
        Store(out_at, IS_BIG ? ShiftLeft32<24>(low) : low);
        Store(out_at + 16, IS_BIG ? ShiftLeft32<24>(high) : high);
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
