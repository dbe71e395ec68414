/// Converts blocks of decimal digits to and from integers: the inner steps of NumberConverter.
///
/// Everything here uses SSE2 at most, which every x86-64 processor has, so there is nothing to pick
/// at run time. The comment of each function says which bytes it touches.
#ifndef PLATFORMABSTRACTION_DECIMALDIGITS_H
#define PLATFORMABSTRACTION_DECIMALDIGITS_H

#include <emmintrin.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Applies a macro to each type of ConvertibleInteger.
#define ORSKA_FOR_EACH_INTEGER(MACRO) \
    MACRO(std::int8_t)                \
    MACRO(std::uint8_t)               \
    MACRO(std::int16_t)               \
    MACRO(std::uint16_t)              \
    MACRO(std::int32_t)               \
    MACRO(std::uint32_t)              \
    MACRO(std::int64_t)               \
    MACRO(std::uint64_t)

namespace Orska::Support::DecimalDigits {

constexpr std::uint64_t TEN_TO_8 = 100'000'000;
constexpr std::uint64_t TEN_TO_16 = TEN_TO_8 * TEN_TO_8;

/// The two digits of 0 to 99, side by side.
struct DigitPairs {
    char m_text[200];
};

constexpr DigitPairs MakeDigitPairs() {
    DigitPairs pairs{};
    for (int value = 0; value < 100; ++value) {
        pairs.m_text[2 * value] = static_cast<char>('0' + value / 10);
        pairs.m_text[2 * value + 1] = static_cast<char>('0' + value % 10);
    }
    return pairs;
}

alignas(64) inline constexpr DigitPairs DIGIT_PAIRS = MakeDigitPairs();

/// 10^0 to 10^16.
constexpr std::array<std::uint64_t, 17> MakePowersOfTen() {
    std::array<std::uint64_t, 17> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = powers[i - 1] * 10;
    }
    return powers;
}

inline constexpr std::array<std::uint64_t, 17> POWERS_OF_TEN = MakePowersOfTen();

inline bool IsDigit(char in_character) noexcept {
    return static_cast<unsigned char>(in_character - '0') < 10;
}

template <class Word>
inline Word Load(const char* in_text) noexcept {
    Word word;
    std::memcpy(&word, in_text, sizeof(word));
    return word;
}

// --- Text to integer. A block is text minus '0' in every byte, the first character lowest. ---

constexpr std::uint64_t ZEROS = 0x3030303030303030;

/// Marks every byte that is not a digit in its highest bit; after a byte above 0x89 perhaps
/// digits too.
template <class Block>
inline Block MarkOthers(Block in_block) noexcept {
    constexpr Block ONES = static_cast<Block>(~Block{0}) / 0xff;  // 1 in each byte
    return ((in_block + ONES * 0x76) | in_block) & (ONES * 0x80);
}

inline bool AreDigits(std::uint64_t in_block) noexcept { return MarkOthers(in_block) == 0; }

/// How many digits a block begins with.
inline std::size_t CountLeadingDigits(std::uint64_t in_block) noexcept {
    return static_cast<std::size_t>(std::countr_zero(MarkOthers(in_block))) / 8;
}

/// The value of 8 digits. The block must hold digits only.
inline std::uint32_t BlockValue(std::uint64_t in_block) noexcept {
    constexpr std::uint64_t MASK = 0x000000ff000000ff;
    const std::uint64_t pairs = in_block * 10 + (in_block >> 8);
    const std::uint64_t high = (pairs & MASK) * (100 + (std::uint64_t{1'000'000} << 32));
    const std::uint64_t low = ((pairs >> 16) & MASK) * (1 + (std::uint64_t{10'000} << 32));
    return static_cast<std::uint32_t>((high + low) >> 32);
}

/// A block of 1 to 3 characters, right-aligned after zeros. Reads those characters only.
inline std::uint64_t LoadUpTo3(const char* in_text, std::size_t in_length) noexcept {
    // With fewer than three characters the loads repeat some; the mask drops the repeated ones.
    const std::uint64_t first = static_cast<unsigned char>(in_text[0]);
    const std::uint64_t middle = static_cast<unsigned char>(in_text[(in_length - 1) >> 1]);
    const std::uint64_t last = static_cast<unsigned char>(in_text[in_length - 1]);
    const std::uint64_t mask = ~std::uint64_t{0} << (64 - 8 * in_length);
    return ((first << 40 | middle << 48 | last << 56) ^ ZEROS) & mask;
}

/// A block of 4 to 8 characters, right-aligned after zeros. Reads those characters only.
inline std::uint64_t Load4To8(const char* in_text, std::size_t in_length) noexcept {
    const std::uint64_t first = Load<std::uint32_t>(in_text) ^ static_cast<std::uint32_t>(ZEROS);
    const std::uint64_t last =
        Load<std::uint32_t>(in_text + in_length - 4) ^ static_cast<std::uint32_t>(ZEROS);
    const auto front = static_cast<std::uint32_t>(first << (8 * (8 - in_length)));
    return last << 32 | front;
}

/// The value of 16 digits in a register of characters minus '0'.
inline std::uint64_t BlockValue(__m128i in_block) noexcept {
    const __m128i tens =
        _mm_mullo_epi16(_mm_and_si128(in_block, _mm_set1_epi16(0x00ff)), _mm_set1_epi16(10));
    const __m128i pairs = _mm_add_epi16(tens, _mm_srli_epi16(in_block, 8));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(100 | 1 << 16));
    const __m128i packed = _mm_packs_epi32(fours, fours);
    const __m128i eights = _mm_madd_epi16(packed, _mm_set1_epi32(10'000 | 1 << 16));
    const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    return (both & 0xffffffff) * TEN_TO_8 + (both >> 32);
}

inline bool AreDigits(__m128i in_block) noexcept {
    const __m128i above = _mm_subs_epu8(in_block, _mm_set1_epi8(9));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(above, _mm_setzero_si128())) == 0xffff;
}

/// 16 characters. Reads those only.
inline __m128i Load16(const char* in_text) noexcept {
    return _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in_text)),
                         _mm_set1_epi8('0'));
}

/// 16 characters, in the form of the blocks of 8.
__extension__ typedef unsigned __int128 WideBlock;

/// 9 to 16 characters, right-aligned after zeros. Reads those only.
inline WideBlock Load9To16(const char* in_text, std::size_t in_length) noexcept {
    const std::uint64_t front = (Load<std::uint64_t>(in_text) ^ ZEROS) << (8 * (16 - in_length));
    const std::uint64_t back = Load<std::uint64_t>(in_text + in_length - 8) ^ ZEROS;
    return WideBlock{back} << 64 | front;
}

inline __m128i ToRegister(WideBlock in_block) noexcept {
    return _mm_set_epi64x(static_cast<long long>(in_block >> 64), static_cast<long long>(in_block));
}

inline std::uint64_t BlockValue(WideBlock in_block) noexcept {
    return BlockValue(static_cast<std::uint64_t>(in_block)) * TEN_TO_8 +
           BlockValue(static_cast<std::uint64_t>(in_block >> 64));
}

/// Counts the bytes above the one whose lowest bit is set; 0 when no bit is set.
inline std::size_t CountBytesAbove(std::uint64_t in_bit) noexcept {
    const std::uint64_t bit = in_bit + (std::uint64_t{in_bit == 0} << 56);
    return 7 - static_cast<std::size_t>(std::countr_zero(bit)) / 8;
}

inline std::size_t CountBytesAbove(WideBlock in_bit) noexcept {
    const auto low = static_cast<std::uint64_t>(in_bit);
    const auto high = static_cast<std::uint64_t>(in_bit >> 64);
    return low != 0 ? CountBytesAbove(low) + 8 : CountBytesAbove(high);
}

// --- Integer to text. A block holds the 8 digits of a value, the first one lowest. ---

/// The block of a value below 10^8: split into halves, each half into pairs, each pair into digits.
inline std::uint64_t MakeBlock(std::uint32_t in_value) noexcept {
    const std::uint32_t high = in_value / 10'000;
    const std::uint64_t halves = high | std::uint64_t{in_value - high * 10'000} << 32;
    const std::uint64_t hundreds = (halves * 10486 >> 20) & 0x0000007f0000007f;
    const std::uint64_t pairs = hundreds | (halves - hundreds * 100) << 16;
    const std::uint64_t tens = (pairs * 103 >> 10) & 0x000f000f000f000f;
    return tens | (pairs - tens * 10) << 8;
}

/// How many zeros a block begins with; 7 when all digits are zeros.
inline unsigned CountLeadingZeros(std::uint64_t in_block) noexcept {
    return static_cast<unsigned>(std::countr_zero(in_block | std::uint64_t{1} << 56)) / 8;
}

/// How many zeros a block ends with; it must not be all zeros.
inline unsigned CountTrailingZeros(std::uint64_t in_block) noexcept {
    return static_cast<unsigned>(std::countl_zero(in_block)) / 8;
}

template <class Word>
inline void Store(char* out_text, Word in_word) noexcept {
    std::memcpy(out_text, &in_word, sizeof(in_word));
}

/// Writes the two digits of a value below 100.
inline void StorePair(char* out_text, std::size_t in_value) noexcept {
    std::memcpy(out_text, DIGIT_PAIRS.m_text + 2 * in_value, 2);
}

/// The summand for each length in bits of a 16-bit value. The sum's bits from 20 on are the count
/// of digits.
constexpr std::array<std::uint32_t, 17> MakeDigitCounts() {
    std::array<std::uint32_t, 17> counts{};
    std::uint32_t digits = 1;  // of the least value of this length
    for (std::uint32_t bits = 0; bits < counts.size(); ++bits) {
        while ((std::uint32_t{1} << bits) / 2 >= POWERS_OF_TEN[digits]) {
            ++digits;
        }
        // Values from the next power of ten on have a digit more.
        counts[bits] = ((digits + 1) << 20) - static_cast<std::uint32_t>(POWERS_OF_TEN[digits]);
    }
    return counts;
}

inline constexpr std::array<std::uint32_t, 17> DIGIT_COUNTS = MakeDigitCounts();

/// How many digits a 16-bit value has; 1 for 0. Its length in bits comes from the exponent of a
/// float above it, which is quicker than the bit scan that every processor has.
inline std::size_t CountDigits(std::uint32_t in_value) noexcept {
    const auto number = std::bit_cast<std::uint32_t>(
        static_cast<float>(static_cast<std::int32_t>(2 * in_value + 1)));
    const std::size_t exponent = number >> 23;
    constexpr std::size_t EXPONENT_OF_1 = 127;
    return (in_value + DIGIT_COUNTS.data()[exponent - EXPONENT_OF_1]) >> 20;
}

// WriteBackwards writes a value that ends just before `out_end` and returns its first character. It
// may write zeros before that, in the room of the longest value of the type (3, 5, 10 or 20 bytes):
// branches on the count of digits would be hard to predict.

inline char* WriteBackwards(char* out_end, std::uint8_t in_value) noexcept {
    const std::uint32_t hundreds = in_value / 100u;
    out_end[-3] = static_cast<char>('0' + hundreds);
    StorePair(out_end - 2, in_value - hundreds * 100);
    return out_end - 1 - (in_value > 9 ? 1 : 0) - (in_value > 99 ? 1 : 0);
}

inline char* WriteBackwards(char* out_end, std::uint16_t in_value) noexcept {
    // A fixed-point number in units of 10^4, with 32 bits after the point, rounded up. The whole
    // part after each step is the next digits.
    const std::uint64_t value = in_value * (((std::uint64_t{1} << 32) + 9999) / 10'000);
    const std::uint64_t rest = (value & 0xffffffff) * 100;
    out_end[-5] = static_cast<char>('0' + (value >> 32));
    StorePair(out_end - 4, rest >> 32);
    StorePair(out_end - 2, (rest & 0xffffffff) * 100 >> 32);
    return out_end - CountDigits(in_value);
}

/// A value below 10^8, in 8 bytes. Values of 16 bits, the most common ones, take the quicker way.
inline char* WriteBlockBackwards(char* out_end, std::uint32_t in_value) noexcept {
    if (in_value <= 0xffff) {
        return WriteBackwards(out_end, static_cast<std::uint16_t>(in_value));
    }
    const std::uint64_t block = MakeBlock(in_value);
    Store(out_end - 8, block | ZEROS);
    return out_end - 8 + CountLeadingZeros(block);
}

inline char* WriteBackwards(char* out_end, std::uint32_t in_value) noexcept {
    if (in_value < TEN_TO_8) {
        return WriteBlockBackwards(out_end, in_value);
    }
    const std::uint32_t front = in_value / static_cast<std::uint32_t>(TEN_TO_8);
    Store(out_end - 8, MakeBlock(in_value - front * static_cast<std::uint32_t>(TEN_TO_8)) | ZEROS);
    StorePair(out_end - 10, front);
    return out_end - 9 - (front > 9 ? 1 : 0);
}

inline char* WriteBackwards(char* out_end, std::uint64_t in_value) noexcept {
    if (in_value < TEN_TO_8) {
        return WriteBlockBackwards(out_end, static_cast<std::uint32_t>(in_value));
    }
    const std::uint64_t upper = in_value / TEN_TO_8;
    Store(out_end - 8, MakeBlock(static_cast<std::uint32_t>(in_value - upper * TEN_TO_8)) | ZEROS);
    if (upper < TEN_TO_8) {
        return WriteBlockBackwards(out_end - 8, static_cast<std::uint32_t>(upper));
    }
    const auto front = static_cast<std::uint32_t>(upper / TEN_TO_8);
    Store(out_end - 16, MakeBlock(static_cast<std::uint32_t>(upper - front * TEN_TO_8)) | ZEROS);
    const std::uint64_t block = MakeBlock(front);
    Store(out_end - 20, static_cast<std::uint32_t>((block | ZEROS) >> 32));
    return out_end - 24 + CountLeadingZeros(block);
}

}  // namespace Orska::Support::DecimalDigits

#endif
