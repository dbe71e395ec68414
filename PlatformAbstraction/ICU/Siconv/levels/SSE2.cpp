// Converts runs of plain characters by whole vectors and everything else by the scalar functions,
// with instructions that every x86-64 processor has. A character is plain when it only needs a
// wider or narrower unit.
#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/Vector128.h"

namespace Orska::Support::Siconv {

namespace {

using V = Vector128;  // without its Shuffle and MultiplyAdd8, which need SSSE3

V::Type SwapBytes16(V::Type in_units) {
    return V::Or(V::ShiftLeft16<8>(in_units), V::ShiftRight16<8>(in_units));
}

V::Type SwapBytes32(V::Type in_units) {
    const V::Type swapped = SwapBytes16(in_units);
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(swapped, _MM_SHUFFLE(2, 3, 0, 1)),
                               _MM_SHUFFLE(2, 3, 0, 1));
}

// Sources: the size of a unit, and a mask of the characters in 16 bytes that are not plain.

struct FromBytesBelow80 {
    static constexpr std::uint32_t UNIT = 1;
    static V::Type Order(V::Type in_at) { return in_at; }
    static std::uint64_t GetOthers(V::Type in_at) { return V::GetSignBits(in_at); }
};

struct FromLatin1 : FromBytesBelow80 {
    static std::uint64_t GetOthers(V::Type) { return 0; }
};

struct FromCp1252 : FromBytesBelow80 {
    static std::uint64_t GetOthers(V::Type in_at) {
        return V::GetSignBits(V::GreaterSigned8(V::All8<0xA0>(), in_at));  // signed: 80 to 9F
    }
};

// Units below 2 to the power of POWER.
template <bool IS_BIG, int POWER>
struct FromUtf16 {
    static constexpr std::uint32_t UNIT = 2;
    static V::Type Order(V::Type in_at) { return IS_BIG ? SwapBytes16(in_at) : in_at; }
    static std::uint64_t GetOthers(V::Type in_units) {
        return V::GetSignBits(V::Equal16(V::ShiftRight16<POWER>(in_units), V::Zero())) ^ V::FULL;
    }
};

template <bool IS_BIG>
struct FromUtf32 {
    static constexpr std::uint32_t UNIT = 4;
    static V::Type Order(V::Type in_at) { return IS_BIG ? SwapBytes32(in_at) : in_at; }
    static std::uint64_t GetOthers(V::Type in_units) {
        return V::GetSignBits(V::Equal32(V::ShiftRight32<7>(in_units), V::Zero())) ^ V::FULL;
    }
};

// Targets: write 16 bytes of source as units; at least the first characters are plain.

struct ToBytes {
    static constexpr std::uint32_t UNIT = 1;
    template <std::uint32_t SOURCE_UNIT>
    static void Write(char* out_to, V::Type in_at) {
        if constexpr (SOURCE_UNIT == 1) {
            V::Store(out_to, in_at);
        } else if constexpr (SOURCE_UNIT == 2) {
            V::WriteNarrow16(out_to, in_at);
        } else {
            const auto units = V::PackSigned32(in_at, in_at);
            const int bytes = _mm_cvtsi128_si32(V::PackUnsigned16(units, units));
            __builtin_memcpy(out_to, &bytes, 4);
        }
    }
};

template <bool IS_BIG>
struct ToUnitsOf16 {
    static constexpr std::uint32_t UNIT = 2;
    template <std::uint32_t>
    static void Write(char* out_to, V::Type in_at) {
        V::WriteWide16<IS_BIG>(out_to, in_at);
    }
};

template <bool IS_BIG>
struct ToUnitsOf32 {
    static constexpr std::uint32_t UNIT = 4;
    template <std::uint32_t>
    static void Write(char* out_to, V::Type in_at) {
        V::WriteWide32<IS_BIG>(out_to, in_at);
    }
};

// Converts blocks of 16 bytes up to the first character that is not plain; output after it is
// scratch. Writes no more than 16 characters need.
template <class From, class To>
void ConvertRun(TranscoderSource& io_source, TranscoderTarget& io_target) {
    constexpr std::uint64_t WRITTEN = 16 / From::UNIT * To::UNIT;
    while (io_source.m_length - io_source.m_position >= 16 &&
           io_target.m_length - io_target.m_position >= WRITTEN) {
        const auto at = From::Order(V::Load(io_source.m_data + io_source.m_position));
        const std::uint64_t others = From::GetOthers(at);
        To::template Write<From::UNIT>(io_target.m_data + io_target.m_position, at);
        const auto plain = others == 0 ? 16U : static_cast<std::uint32_t>(__builtin_ctzll(others));
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
using SourceOf =
    TypeOf<SOURCE, FromBytesBelow80, FromUtf16<IS_BIG_ENDIAN<SOURCE>, (TARGET == UTF8 ? 7 : 8)>,
           FromUtf32<IS_BIG_ENDIAN<SOURCE>>,
           std::conditional_t<TARGET == UTF8, FromBytesBelow80,
                              std::conditional_t<SOURCE == LATIN1, FromLatin1, FromCp1252>>>;
template <int TARGET>
using TargetOf = TypeOf<TARGET, ToBytes, ToUnitsOf16<IS_BIG_ENDIAN<TARGET>>,
                        ToUnitsOf32<IS_BIG_ENDIAN<TARGET>>, ToBytes>;

struct RunForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        return ConvertText<SOURCE, TARGET, SourceOf<SOURCE, TARGET>, TargetOf<TARGET>>(io_source,
                                                                                       io_target);
    }
};

}  // namespace

constexpr TranscoderTable SSE2_TABLE = MakeTranscoderTable<RunForm>();

}  // namespace Orska::Support::Siconv
