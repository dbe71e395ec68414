/// Blocks of decimal digits to and from integers: the inner steps of NumberConverter.
///
/// Everything here uses SSE2 at most, which every x86-64 processor has, so there is nothing to pick
/// at run time. Above each function stands which bytes it touches.
#ifndef PLATFORMABSTRACTION_DECIMALDIGITS_H
#define PLATFORMABSTRACTION_DECIMALDIGITS_H

#include <emmintrin.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

/// 10^0 to 10^19.
constexpr std::array<std::uint64_t, 20> MakePowersOfTen() {
    std::array<std::uint64_t, 20> powers{};
    std::uint64_t power = 1;
    for (std::uint64_t& entry : powers) {
        entry = power;
        power *= 10;  // the last product wraps and is not used
    }
    return powers;
}

inline constexpr std::array<std::uint64_t, 20> POWERS_OF_TEN = MakePowersOfTen();

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

inline bool AreDigits(std::uint64_t in_block) noexcept {
    return (((in_block + 0x7676767676767676) | in_block) & 0x8080808080808080) == 0;
}

/// The value of 8 digits. The block must hold digits only.
inline std::uint32_t BlockValue(std::uint64_t in_block) noexcept {
    constexpr std::uint64_t MASK = 0x000000ff000000ff;
    const std::uint64_t pairs = in_block * 10 + (in_block >> 8);
    const std::uint64_t high = (pairs & MASK) * (100 + (std::uint64_t{1'000'000} << 32));
    const std::uint64_t low = ((pairs >> 16) & MASK) * (1 + (std::uint64_t{10'000} << 32));
    return static_cast<std::uint32_t>((high + low) >> 32);
}

/// A block of 1 to 3 characters, right-aligned behind zeros. Reads those characters only.
inline std::uint64_t LoadUpTo3(const char* in_text, std::size_t in_length) noexcept {
    // With fewer than three characters the loads repeat some; the mask drops those in front.
    const std::uint64_t first = static_cast<unsigned char>(in_text[0]);
    const std::uint64_t middle = static_cast<unsigned char>(in_text[(in_length - 1) >> 1]);
    const std::uint64_t last = static_cast<unsigned char>(in_text[in_length - 1]);
    const std::uint64_t mask = ~std::uint64_t{0} << (64 - 8 * in_length);
    return ((first << 40 | middle << 48 | last << 56) ^ ZEROS) & mask;
}

/// A block of 4 to 8 characters, right-aligned behind zeros. Reads those characters only.
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

/// 9 to 16 characters, right-aligned behind zeros. Reads those only.
inline __m128i Load9To16(const char* in_text, std::size_t in_length) noexcept {
    const std::uint64_t front = (Load<std::uint64_t>(in_text) ^ ZEROS) << (8 * (16 - in_length));
    const std::uint64_t back = Load<std::uint64_t>(in_text + in_length - 8) ^ ZEROS;
    return _mm_set_epi64x(static_cast<long long>(back), static_cast<long long>(front));
}

// --- Integer to text. All write with leading zeros, ending just in front of `out_end`. ---

/// Writes 2 bytes.
inline void WritePair(char* out_end, std::uint32_t in_value) noexcept {
    std::memcpy(out_end - 2, DIGIT_PAIRS.m_text + 2 * in_value, 2);
}

/// Writes 4 bytes; the value is below 10^4.
inline void Write4(char* out_end, std::uint32_t in_value) noexcept {
    WritePair(out_end - 2, in_value / 100);
    WritePair(out_end, in_value % 100);
}

/// Writes 8 bytes; the value is below 10^8.
inline void Write8(char* out_end, std::uint32_t in_value) noexcept {
    Write4(out_end - 4, in_value / 10'000);
    Write4(out_end, in_value % 10'000);
}

/// Writes 3, 5, 10 or 20 bytes: as many as the largest value of the type has.
inline void WriteAll(char* out_end, std::uint8_t in_value) noexcept {
    const std::uint32_t hundreds = in_value / 100u;
    out_end[-3] = static_cast<char>('0' + hundreds);
    WritePair(out_end, in_value - hundreds * 100);
}

inline void WriteAll(char* out_end, std::uint16_t in_value) noexcept {
    const std::uint32_t front = in_value / 10'000u;
    out_end[-5] = static_cast<char>('0' + front);
    Write4(out_end, in_value - front * 10'000);
}

inline void WriteAll(char* out_end, std::uint32_t in_value) noexcept {
    const std::uint32_t front = in_value / static_cast<std::uint32_t>(TEN_TO_8);
    WritePair(out_end - 8, front);
    Write8(out_end, in_value - front * static_cast<std::uint32_t>(TEN_TO_8));
}

inline void WriteAll(char* out_end, std::uint64_t in_value) noexcept {
    const std::uint64_t upper = in_value / TEN_TO_8;
    const auto front = static_cast<std::uint32_t>(upper / TEN_TO_8);
    Write4(out_end - 16, front);
    Write8(out_end - 8, static_cast<std::uint32_t>(upper - front * TEN_TO_8));
    Write8(out_end, static_cast<std::uint32_t>(in_value - upper * TEN_TO_8));
}

/// How many digits a value has; 1 for 0.
inline std::size_t CountDigits(std::uint64_t in_value) noexcept {
    // 1233 / 4096 is just above log10(2): the estimate is right or one too small. 0 counts as 1,
    // and setting the lowest bit moves no other value across a power of ten.
    const std::uint64_t value = in_value | 1;
    const std::size_t estimate = static_cast<std::size_t>(std::bit_width(value)) * 1233 >> 12;
    return estimate + (value >= POWERS_OF_TEN[estimate] ? 1 : 0);
}

inline std::size_t CountDigits(std::uint16_t in_value) noexcept {
    return 1u + (in_value > 9 ? 1u : 0u) + (in_value > 99 ? 1u : 0u) + (in_value > 999 ? 1u : 0u) +
           (in_value > 9999 ? 1u : 0u);
}

}  // namespace Orska::Support::DecimalDigits

#endif
