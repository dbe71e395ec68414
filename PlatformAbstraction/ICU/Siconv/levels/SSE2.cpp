// Converts runs of plain characters by whole vectors and everything else by the scalar functions,
// with instructions that every x86-64 processor has. A character is plain when it only needs a
// wider or narrower unit.
#include <emmintrin.h>

#include <type_traits>

#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"

namespace Orska::Support::Siconv {

namespace {

__m128i Load(const char* in_at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_at)); }

void Store(char* out_at, __m128i in_value) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_at), in_value);
}

__m128i SwapBytes16(__m128i in_units) {
    return _mm_or_si128(_mm_slli_epi16(in_units, 8), _mm_srli_epi16(in_units, 8));
}

__m128i SwapBytes32(__m128i in_units) {
    const __m128i swapped = SwapBytes16(in_units);
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(swapped, _MM_SHUFFLE(2, 3, 0, 1)),
                               _MM_SHUFFLE(2, 3, 0, 1));
}

std::uint32_t GetMask(__m128i in_bytes) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(in_bytes));
}

// Sources: the size of a unit, and a mask of the characters in 16 bytes that are not plain.

struct FromBytesBelow80 {
    static constexpr std::uint32_t UNIT = 1;
    static __m128i Order(__m128i in_at) { return in_at; }
    static std::uint32_t GetOthers(__m128i in_at) { return GetMask(in_at); }
};

struct FromLatin1 : FromBytesBelow80 {
    static std::uint32_t GetOthers(__m128i) { return 0; }
};

struct FromCp1252 : FromBytesBelow80 {
    static std::uint32_t GetOthers(__m128i in_at) {
        const __m128i top = _mm_and_si128(in_at, _mm_set1_epi8(static_cast<char>(0xE0)));
        return GetMask(_mm_cmpeq_epi8(top, _mm_set1_epi8(static_cast<char>(0x80))));
    }
};

// Units below 2 to the power of POWER.
template <bool IS_BIG, int POWER>
struct FromUtf16 {
    static constexpr std::uint32_t UNIT = 2;
    static __m128i Order(__m128i in_at) { return IS_BIG ? SwapBytes16(in_at) : in_at; }
    static std::uint32_t GetOthers(__m128i in_units) {
        const __m128i high = _mm_srli_epi16(in_units, POWER);
        return GetMask(_mm_cmpeq_epi16(high, _mm_setzero_si128())) ^ 0xFFFF;
    }
};

template <bool IS_BIG>
struct FromUtf32 {
    static constexpr std::uint32_t UNIT = 4;
    static __m128i Order(__m128i in_at) { return IS_BIG ? SwapBytes32(in_at) : in_at; }
    static std::uint32_t GetOthers(__m128i in_units) {
        const __m128i high = _mm_srli_epi32(in_units, 7);
        return GetMask(_mm_cmpeq_epi32(high, _mm_setzero_si128())) ^ 0xFFFF;
    }
};

// Targets: write 16 bytes of source as units; at least the first characters are plain.

struct ToBytes {
    static constexpr std::uint32_t UNIT = 1;
    template <std::uint32_t SOURCE_UNIT>
    static void Write(char* out_to, __m128i in_at) {
        if constexpr (SOURCE_UNIT == 1) {
            Store(out_to, in_at);
        } else if constexpr (SOURCE_UNIT == 2) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out_to), _mm_packus_epi16(in_at, in_at));
        } else {
            const __m128i units = _mm_packs_epi32(in_at, in_at);
            const int bytes = _mm_cvtsi128_si32(_mm_packus_epi16(units, units));
            __builtin_memcpy(out_to, &bytes, 4);
        }
    }
};

template <bool IS_BIG>
struct ToUnitsOf16 {
    static constexpr std::uint32_t UNIT = 2;
    template <std::uint32_t SOURCE_UNIT>
    static void Write(char* out_to, __m128i in_at) {
        const __m128i zero = _mm_setzero_si128();
        Store(out_to, IS_BIG ? _mm_unpacklo_epi8(zero, in_at) : _mm_unpacklo_epi8(in_at, zero));
        Store(out_to + 16,
              IS_BIG ? _mm_unpackhi_epi8(zero, in_at) : _mm_unpackhi_epi8(in_at, zero));
    }
};

template <bool IS_BIG>
struct ToUnitsOf32 {
    static constexpr std::uint32_t UNIT = 4;
    template <std::uint32_t SOURCE_UNIT>
    static void Write(char* out_to, __m128i in_at) {
        const __m128i zero = _mm_setzero_si128();
        WriteHalf(out_to, _mm_unpacklo_epi8(in_at, zero));
        WriteHalf(out_to + 32, _mm_unpackhi_epi8(in_at, zero));
    }

private:
    static void WriteHalf(char* out_to, __m128i in_units) {
        const __m128i low = _mm_unpacklo_epi16(in_units, _mm_setzero_si128());
        const __m128i high = _mm_unpackhi_epi16(in_units, _mm_setzero_si128());
        Store(out_to, IS_BIG ? _mm_slli_epi32(low, 24) : low);
        Store(out_to + 16, IS_BIG ? _mm_slli_epi32(high, 24) : high);
    }
};

// Converts blocks of 16 bytes up to the first character that is not plain; output after it is
// scratch. Writes no more than 16 characters need.
template <class From, class To>
void ConvertRun(TranscoderSource& io_source, TranscoderTarget& io_target) {
    constexpr std::uint64_t WRITTEN = 16 / From::UNIT * To::UNIT;
    while (io_source.m_length - io_source.m_position >= 16 &&
           io_target.m_length - io_target.m_position >= WRITTEN) {
        const __m128i at = From::Order(Load(io_source.m_data + io_source.m_position));
        const std::uint32_t others = From::GetOthers(at);
        To::template Write<From::UNIT>(io_target.m_data + io_target.m_position, at);
        const auto plain = others == 0 ? 16U : static_cast<std::uint32_t>(__builtin_ctz(others));
        io_source.m_position += plain;
        io_target.m_position += plain / From::UNIT * To::UNIT;
        if (others != 0) {
            return;
        }
    }
}

template <int SOURCE, int TARGET, class From, class To>
std::int32_t ConvertText(TranscoderSource& io_source, TranscoderTarget& io_target) {
    // How much the scalar function gets at a time: it would not stop where the next run begins.
    constexpr std::uint64_t WINDOW = 32;
    const TranscoderFunction scalar = SCALAR_TABLE.m_functions[SOURCE][TARGET];
    for (;;) {
        ConvertRun<From, To>(io_source, io_target);
        const std::uint64_t left = io_source.m_length - io_source.m_position;
        if (left == 0) {
            return TRANSCODER_DONE;
        }
        if (left <= WINDOW) {
            return scalar(io_source, io_target);
        }
        TranscoderSource window = io_source;
        window.m_length = io_source.m_position + WINDOW;
        const std::int32_t result = scalar(window, io_target);
        io_source.m_position = window.m_position;
        // A code point that the window cuts off is whole in the next one.
        if (result == TRANSCODER_INVALID || result == TRANSCODER_FULL) {
            return result;
        }
    }
}

template <int SOURCE, int TARGET>
consteval auto SelectSource() {
    if constexpr (IS_UTF16<SOURCE>) {
        return FromUtf16 < IS_BIG_ENDIAN<SOURCE>, TARGET == UTF8 ? 7 : 8 > ();
    } else if constexpr (IS_UTF32<SOURCE>) {
        return FromUtf32<IS_BIG_ENDIAN<SOURCE>>();
    } else if constexpr (SOURCE == UTF8 || TARGET == UTF8) {
        return FromBytesBelow80();
    } else {
        return std::conditional_t<SOURCE == LATIN1, FromLatin1, FromCp1252>();
    }
}

template <int TARGET>
consteval auto SelectTarget() {
    if constexpr (IS_UTF16<TARGET>) {
        return ToUnitsOf16<IS_BIG_ENDIAN<TARGET>>();
    } else if constexpr (IS_UTF32<TARGET>) {
        return ToUnitsOf32<IS_BIG_ENDIAN<TARGET>>();
    } else {
        return ToBytes();
    }
}

struct RunForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        return ConvertText<SOURCE, TARGET, decltype(SelectSource<SOURCE, TARGET>()),
                           decltype(SelectTarget<TARGET>())>(io_source, io_target);
    }
};

}  // namespace

constexpr TranscoderTable SSE2_TABLE = MakeTranscoderTable<RunForm>();

}  // namespace Orska::Support::Siconv
