// Converts runs of plain characters by whole vectors and everything else by the scalar functions,
// with instructions that every x86-64 processor has. A character is plain when it only needs a
// wider or narrower unit.
#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/Vector128.h"

namespace Orska::Support::Siconv {

namespace {

using V = Vector128;  // without its Shuffle and MultiplyAdd8, which need SSSE3

// A mask of the bytes that are not plain.
template <int SOURCE, int TARGET>
std::uint64_t GetOthers(V::Type in_at) {
    if constexpr (IS_UTF16<SOURCE> || IS_UTF32<SOURCE>) {
        // The bits that no plain unit has, as in four bytes of the text.
        constexpr std::uint32_t UTF16_BITS = TARGET == UTF8 ? 0xFF80FF80 : 0xFF00FF00;
        constexpr std::uint32_t BITS = IS_UTF16<SOURCE> ? UTF16_BITS : 0xFFFFFF80;
        constexpr std::uint32_t IN_TEXT = IS_BIG_ENDIAN<SOURCE> ? __builtin_bswap32(BITS) : BITS;
        const auto others = V::And(in_at, V::All32<IN_TEXT>());
        return V::GetSignBits(V::Equal8(others, V::Zero())) ^ V::FULL;
    } else if constexpr (SOURCE == UTF8 || TARGET == UTF8) {
        return V::GetSignBits(in_at);
    } else if constexpr (SOURCE == CP1252) {
        return V::GetSignBits(V::GreaterSigned8(V::All8<0xA0>(), in_at));  // signed: 80 to 9F
    } else {
        return 0;
    }
}

// Writes 16 bytes of source as units of the target; at least the first characters are plain.
template <int SOURCE, int TARGET>
void Write(char* out_to, V::Type in_at) {
    constexpr bool IS_BIG = IS_BIG_ENDIAN<SOURCE>;
    if constexpr (IS_UTF16<SOURCE>) {
        V::WriteNarrow16(out_to, IS_BIG ? V::ShiftRight16<8>(in_at) : in_at);
    } else if constexpr (IS_UTF32<SOURCE>) {
        const auto units = IS_BIG ? V::ShiftRight32<24>(in_at) : in_at;
        const auto pairs = V::PackSigned32(units, units);
        const int bytes = _mm_cvtsi128_si32(V::PackUnsigned16(pairs, pairs));
        __builtin_memcpy(out_to, &bytes, 4);
    } else if constexpr (IS_UTF16<TARGET>) {
        V::WriteWide16<IS_BIG_ENDIAN<TARGET>>(out_to, in_at);
    } else if constexpr (IS_UTF32<TARGET>) {
        V::WriteWide32<IS_BIG_ENDIAN<TARGET>>(out_to, in_at);
    } else {
        V::Store(out_to, in_at);
    }
}

// Converts blocks of 16 bytes up to the first character that is not plain; output after it is
// scratch. Writes no more than 16 characters need.
template <int SOURCE, int TARGET>
void ConvertRun(TranscoderSource& io_source, TranscoderTarget& io_target) {
    constexpr std::uint64_t WRITTEN = 16 / UNIT<SOURCE> * UNIT<TARGET>;
    while (io_source.m_length - io_source.m_position >= 16 &&
           io_target.m_length - io_target.m_position >= WRITTEN) {
        const auto at = V::Load(io_source.m_data + io_source.m_position);
        const std::uint64_t others = GetOthers<SOURCE, TARGET>(at);
        Write<SOURCE, TARGET>(io_target.m_data + io_target.m_position, at);
        const auto plain = others == 0 ? 16U : static_cast<std::uint32_t>(__builtin_ctzll(others));
        const std::uint32_t units = plain / UNIT<SOURCE>;
        io_source.m_position += units * UNIT<SOURCE>;
        io_target.m_position += units * UNIT<TARGET>;
        if (others != 0) {
            return;
        }
    }
}

struct RunForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        // How much the scalar function gets at a time: it would not stop where the next run begins.
        constexpr std::uint64_t WINDOW = 32;
        const TranscoderFunction scalar = SCALAR_TABLE.m_functions[SOURCE][TARGET];
        for (;;) {
            ConvertRun<SOURCE, TARGET>(io_source, io_target);
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
};

}  // namespace

constexpr TranscoderTable SSE2_TABLE = MakeTranscoderTable<RunForm>();

}  // namespace Orska::Support::Siconv
