// The operations of Vector128 on thirty-two bytes in two lanes, with AVX2 and POPCNT. Included by
// kernels only; everything is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_VECTOR256_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_VECTOR256_H

#include <immintrin.h>

#include "PlatformAbstraction/ICU/Siconv/blocks/Vector128.h"

namespace Orska::Support::Siconv {

namespace {

struct Vector256 : VectorBase<Vector256> {
    using Type = __m256i;
    using Lane = Vector128;
    ORSKA_OPERATIONS(_mm256, si256)
    static constexpr std::uint32_t SIZE = 32;
    static constexpr std::uint64_t FULL = 0xFFFFFFFF;

    static ORSKA_INLINE Type Load(const char* in_at) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in_at));
    }
    static ORSKA_INLINE Type LoadPart(const char* in_at, std::uint64_t in_size) {
        if (in_size < 16) {
            return _mm256_zextsi128_si256(Vector128::LoadPart(in_at, in_size));
        }
        const __m128i order =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(MOVE_DOWN.m_bytes + (32 - in_size)));
        const __m128i high = _mm_shuffle_epi8(Vector128::Load(in_at + in_size - 16), order);
        return _mm256_inserti128_si256(_mm256_castsi128_si256(Vector128::Load(in_at)), high, 1);
    }
    static ORSKA_INLINE void Store(char* out_at, Type in_value) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out_at), in_value);
    }
    static ORSKA_INLINE Type Zero() { return _mm256_setzero_si256(); }
    template <std::uint32_t VALUE>
    static ORSKA_INLINE Type All32() {
        Type value;
        __asm__("vmovdqa %1, %0" : "=x"(value) : "m"(CONSTANT<VALUE>));
        return value;
    }
    static ORSKA_INLINE Type Select(Type in_a, Type in_b, Type in_mask) {
        return _mm256_blendv_epi8(in_a, in_b, in_mask);
    }
    static ORSKA_INLINE Type SwapMiddle32(Type in_value) {
        return _mm256_shuffle_epi32(in_value, _MM_SHUFFLE(3, 1, 2, 0));
    }
    static ORSKA_INLINE Type SwapMiddle64(Type in_value) {
        return _mm256_permute4x64_epi64(in_value, _MM_SHUFFLE(3, 1, 2, 0));
    }
    static ORSKA_INLINE Type RepeatLane(std::uint32_t in_0, std::uint32_t in_1, std::uint32_t in_2,
                                        std::uint32_t in_3) {
        const auto lane = [](std::uint32_t in_word) { return static_cast<int>(in_word); };
        return _mm256_setr_epi32(lane(in_0), lane(in_1), lane(in_2), lane(in_3), lane(in_0),
                                 lane(in_1), lane(in_2), lane(in_3));
    }
    static ORSKA_INLINE Type LoadTwelves(const char* in_at) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(Vector128::Load(in_at)),
                                       Vector128::Load(in_at + 12), 1);
    }
    static ORSKA_INLINE Type JoinHalves(Type in_first, Type in_second) {
        return SwapMiddle64(Or(in_first, in_second));
    }
    static ORSKA_INLINE Type PackUnits16(Type in_first, Type in_second) {
        return SwapMiddle64(PackUnsigned16(in_first, in_second));
    }
    static ORSKA_INLINE bool IsZero(Type in_value) {
        return _mm256_testz_si256(in_value, in_value) != 0;
    }
    static ORSKA_INLINE std::uint64_t GetSignBits(Type in_value) {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(in_value));
    }
    template <int COUNT>
    static ORSKA_INLINE Type Earlier(Type in_value, Type in_before) {
        const Type middle = _mm256_permute2x128_si256(in_before, in_value, 0x21);
        return _mm256_alignr_epi8(in_value, middle, 16 - COUNT);
    }
    static ORSKA_INLINE std::uint32_t CountBits(std::uint64_t in_byte) {
        return Vector128::CountBits(in_byte);
    }
    static ORSKA_INLINE Type LoadRows(const ShuffleTable& in_table, std::uint64_t in_rows) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(Lane::LoadRows(in_table, in_rows)),
                                       Lane::LoadRows(in_table, in_rows >> 16), 1);
    }
    static ORSKA_INLINE __m128i GetLow(Type in_value) { return _mm256_castsi256_si128(in_value); }
    static ORSKA_INLINE __m128i GetHigh(Type in_value) {
        return _mm256_extracti128_si256(in_value, 1);
    }

    static ORSKA_INLINE void Put(char*& io_to, Type in_value, std::uint64_t in_size) {
        Store(io_to, in_value);
        io_to += in_size;
    }
    static ORSKA_INLINE void Put(BoundedTo& io_to, Type in_value, std::uint64_t in_size) {
        Vector128::PutTwo(io_to, GetLow(in_value), GetHigh(in_value), in_size);
    }

    template <bool IS_BIG>
    static ORSKA_INLINE void WriteWide16(char* out_at, Type in_bytes) {
        WriteUnits16<IS_BIG>(out_at, in_bytes, Zero());
    }
    template <bool IS_BIG>
    static ORSKA_INLINE void WriteWide32(char* out_at, Type in_bytes) {
        WriteUnits32<IS_BIG>(out_at, GetLow(in_bytes));
        WriteUnits32<IS_BIG>(out_at + 64, GetHigh(in_bytes));
    }
    template <bool IS_BIG>
    static ORSKA_INLINE void WriteWide32From(char* out_at, const char* in_from) {
        Vector128::WriteWide32From<IS_BIG>(out_at, in_from);
        Vector128::WriteWide32From<IS_BIG>(out_at + 64, in_from + 16);
    }

    template <bool IS_BIG, class To>
    static ORSKA_INLINE void PutWide(To& io_to, __m128i in_units, std::uint64_t in_size) {
        const Type wide = _mm256_cvtepu16_epi32(in_units);
        Put(io_to, IS_BIG ? ShiftLeft32<16>(wide) : wide, in_size);
    }

    static ORSKA_INLINE void WriteNarrow16(char* out_at, Type in_units) {
        Vector128::Store(out_at, _mm_packus_epi16(GetLow(in_units), GetHigh(in_units)));
    }
    static ORSKA_INLINE void WriteNarrow32(char* out_at, Type in_units) {
        const Type bytes = Shuffle(in_units, RepeatLane(0x0C080400, ~0U, ~0U, ~0U));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out_at),
                         _mm_unpacklo_epi32(GetLow(bytes), GetHigh(bytes)));
    }

    template <class To>
    static ORSKA_INLINE void CompressNarrow16(To& io_at, Type in_units, std::uint64_t in_keep) {
        const __m128i bytes = _mm_packus_epi16(GetLow(in_units), GetHigh(in_units));
        Vector128::CompressBytes(io_at, bytes, (in_keep & 0xFF) | ((in_keep >> 8) & 0xFF00));
    }

    template <class To>
    static ORSKA_INLINE void CompressBytes(To& io_at, Type in_bytes, std::uint64_t in_keep) {
        Vector128::CompressBytes(io_at, GetLow(in_bytes), in_keep);
        Vector128::CompressBytes(io_at, GetHigh(in_bytes), in_keep >> 16);
    }

private:
    template <bool IS_BIG>
    static ORSKA_INLINE void WriteUnits32(char* out_at, __m128i in_bytes) {
        const Type low = _mm256_cvtepu8_epi32(in_bytes);
        const Type high = _mm256_cvtepu8_epi32(_mm_unpackhi_epi64(in_bytes, in_bytes));
        Store(out_at, IS_BIG ? ShiftLeft32<24>(low) : low);
        Store(out_at + 32, IS_BIG ? ShiftLeft32<24>(high) : high);
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
