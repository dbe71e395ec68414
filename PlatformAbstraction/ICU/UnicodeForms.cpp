#include "PlatformAbstraction/ICU/UnicodeForms.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "PlatformAbstraction/ICU/UnicodeFormsKernels.h"
#include "PlatformAbstraction/base/CpuLevel.h"

namespace Orska::Support {

static_assert(std::endian::native == std::endian::little, "UTF-16 in memory is UTF-16LE here");

namespace {

constexpr int MEMORY_INDEX = static_cast<int>(EncodingType::ENC_UTF16LE);

template <class Unit, bool IS_BIG>
Unit Load(const char* in_at) noexcept {
    Unit unit;
    std::memcpy(&unit, in_at, sizeof(unit));
    if constexpr (IS_BIG) {
        unit = sizeof(Unit) == 2
                   ? static_cast<Unit>(__builtin_bswap16(static_cast<std::uint16_t>(unit)))
                   : static_cast<Unit>(__builtin_bswap32(unit));
    }
    return unit;
}

template <class Unit, bool IS_BIG>
void Store(Unit in_unit, char* out_at) noexcept {
    char bytes[sizeof(Unit)];
    std::memcpy(bytes, &in_unit, sizeof(bytes));
    const Unit ordered = Load<Unit, IS_BIG>(bytes);
    std::memcpy(out_at, &ordered, sizeof(ordered));
}

// The forms of UTF-16 and UTF-32: reading and writing one code point, as the scalar transcoder has
// it. Read gives the bytes used, or TRANSCODER_INVALID or TRANSCODER_INCOMPLETE.
template <bool IS_BIG>
struct Utf16 {
    static constexpr std::uint64_t WIDTH = 2;

    static std::int32_t Read(const char* in_at, std::uint64_t in_available,
                             char32_t& out_codePoint) noexcept {
        if (in_available < 2) {
            return TRANSCODER_INCOMPLETE;
        }
        const std::uint16_t lead = Load<std::uint16_t, IS_BIG>(in_at);
        out_codePoint = lead;
        if (!U16_IS_SURROGATE(lead)) {
            return 2;
        }
        if (!U16_IS_SURROGATE_LEAD(lead)) {
            return TRANSCODER_INVALID;
        }
        if (in_available < 4) {
            return TRANSCODER_INCOMPLETE;
        }
        const std::uint16_t trail = Load<std::uint16_t, IS_BIG>(in_at + 2);
        if (!U16_IS_TRAIL(trail)) {
            return TRANSCODER_INVALID;
        }
        out_codePoint = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(lead, trail));
        return 4;
    }

    static std::uint64_t GetSize(char32_t in_codePoint) noexcept {
        return in_codePoint < 0x10000 ? 2 : 4;
    }

    static void Write(char32_t in_codePoint, char* out_at) noexcept {
        if (in_codePoint < 0x10000) {
            Store<std::uint16_t, IS_BIG>(static_cast<std::uint16_t>(in_codePoint), out_at);
        } else {
            Store<std::uint16_t, IS_BIG>(U16_LEAD(in_codePoint), out_at);
            Store<std::uint16_t, IS_BIG>(U16_TRAIL(in_codePoint), out_at + 2);
        }
    }
};

template <bool IS_BIG>
struct Utf32 {
    static constexpr std::uint64_t WIDTH = 4;

    static std::int32_t Read(const char* in_at, std::uint64_t in_available,
                             char32_t& out_codePoint) noexcept {
        if (in_available < 4) {
            return TRANSCODER_INCOMPLETE;
        }
        out_codePoint = Load<std::uint32_t, IS_BIG>(in_at);
        return out_codePoint > 0x10FFFF || U_IS_SURROGATE(out_codePoint) ? TRANSCODER_INVALID : 4;
    }

    static std::uint64_t GetSize(char32_t) noexcept { return 4; }

    static void Write(char32_t in_codePoint, char* out_at) noexcept {
        Store<std::uint32_t, IS_BIG>(in_codePoint, out_at);
    }
};

template <class From, class To>
std::int32_t ConvertScalar(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    std::uint64_t from = io_source.m_position;
    std::uint64_t to = io_target.m_position;
    std::int32_t result = TRANSCODER_DONE;
    while (from < io_source.m_length) {
        char32_t codePoint = 0;
        const std::int32_t used =
            From::Read(io_source.m_data + from, io_source.m_length - from, codePoint);
        if (used < 0) {
            result = used;
            break;
        }
        const std::uint64_t size = To::GetSize(codePoint);
        if (io_target.m_length - to < size) {
            result = TRANSCODER_FULL;
            break;
        }
        To::Write(codePoint, io_target.m_data + to);
        from += static_cast<std::uint64_t>(used);
        to += size;
    }
    io_source.m_position = from;
    io_target.m_position = to;
    return result;
}

// Blocks first, then code points. A block step that meets code points it leaves out is tried again
// behind them.
template <class From, class To, UnicodeForms::BlockStep BLOCKS>
std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    constexpr std::uint64_t SCALAR_UNITS = 32;
    for (;;) {
        const std::uint64_t count =
            std::min((io_source.m_length - io_source.m_position) / From::WIDTH,
                     (io_target.m_length - io_target.m_position) / To::WIDTH);
        const std::uint64_t done = BLOCKS(io_source.m_data + io_source.m_position,
                                          io_target.m_data + io_target.m_position, count);
        io_source.m_position += done * From::WIDTH;
        io_target.m_position += done * To::WIDTH;
        if (count - done <= SCALAR_UNITS) {
            return ConvertScalar<From, To>(io_source, io_target);
        }
        TranscoderSource part = {io_source.m_data,
                                 io_source.m_position + SCALAR_UNITS * From::WIDTH,
                                 io_source.m_position};
        const std::int32_t result = ConvertScalar<From, To>(part, io_target);
        const bool isAdvanced = part.m_position > io_source.m_position;
        io_source.m_position = part.m_position;
        // A code point that only the end of the part cut off is met again.
        const bool isOnlyCut = result == TRANSCODER_INCOMPLETE && isAdvanced;
        if (result != TRANSCODER_DONE && !isOnlyCut) {
            return result;
        }
    }
}

// Latin1 and US-ASCII: up to the first code unit that the set lacks, which ICU must replace.
template <char16_t LAST>
std::int32_t ConvertToBytes(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    const std::uint64_t units = (io_source.m_length - io_source.m_position) / 2;
    const std::uint64_t room = io_target.m_length - io_target.m_position;
    const std::uint64_t count = std::min(units, room);
    const char* const source = io_source.m_data + io_source.m_position;
    char* const target = io_target.m_data + io_target.m_position;
    std::uint64_t done = UnicodeForms::Utf16ToBytes_SSE2(source, target, count, LAST);
    char16_t unit = 0;
    while (done < count && (unit = Load<std::uint16_t, false>(source + 2 * done)) <= LAST) {
        target[done++] = static_cast<char>(unit);
    }
    io_source.m_position += 2 * done;
    io_target.m_position += done;
    if (done == units) {
        return TRANSCODER_DONE;
    }
    // What the set lacks may give no byte at all, so it is reported even when the target is full.
    return Load<std::uint16_t, false>(source + 2 * done) <= LAST ? TRANSCODER_FULL
                                                                 : TRANSCODER_INVALID;
}

template <UnicodeForms::BlockStep BLOCKS>
constexpr TranscoderFunction COPY = Convert<Utf16<false>, Utf16<false>, BLOCKS>;

TranscoderFunction GetCopy() noexcept {
    return GetCpuLevel() >= CpuLevel::AVX2 ? COPY<UnicodeForms::CopyUtf16_AVX2>
                                           : COPY<UnicodeForms::CopyUtf16_SSE2>;
}

}  // namespace

TranscoderFunction GetUtf16Encoder(EncodingType in_encoding) noexcept {
    switch (in_encoding) {
        case EncodingType::ENC_UTF8:
            return GetTranscoder(MEMORY_INDEX, GetTranscoderIndex(in_encoding));
        case EncodingType::ENC_UTF16LE:
            return GetCopy();
        case EncodingType::ENC_UTF16BE:
            return ConvertScalar<Utf16<false>, Utf16<true>>;
        case EncodingType::ENC_UTF32LE:
            return Convert<Utf16<false>, Utf32<false>, UnicodeForms::Utf16ToUtf32_SSE2>;
        case EncodingType::ENC_UTF32BE:
            return ConvertScalar<Utf16<false>, Utf32<true>>;
        case EncodingType::ENC_LATIN1:
            return ConvertToBytes<0xFF>;
        case EncodingType::ENC_US_ASCII:
            return ConvertToBytes<0x7F>;
        default:
            return nullptr;
    }
}

TranscoderFunction GetUtf16Decoder(EncodingType in_encoding) noexcept {
    switch (in_encoding) {
        case EncodingType::ENC_UTF8:
        case EncodingType::ENC_LATIN1:
        case EncodingType::ENC_CP1252:
        case EncodingType::ENC_IBM5348:
            return GetTranscoder(GetTranscoderIndex(in_encoding), MEMORY_INDEX);
        case EncodingType::ENC_UTF16LE:
            return GetCopy();
        case EncodingType::ENC_UTF16BE:
            return ConvertScalar<Utf16<true>, Utf16<false>>;
        case EncodingType::ENC_UTF32LE:
            return Convert<Utf32<false>, Utf16<false>, UnicodeForms::Utf32ToUtf16_SSE2>;
        case EncodingType::ENC_UTF32BE:
            return ConvertScalar<Utf32<true>, Utf16<false>>;
        default:
            return nullptr;
    }
}

std::uint64_t GetMostUtf16Units(EncodingType in_encoding, std::uint64_t in_bytes) noexcept {
    switch (in_encoding) {
        case EncodingType::ENC_UTF16LE:
        case EncodingType::ENC_UTF16BE:
        case EncodingType::ENC_UTF32LE:
        case EncodingType::ENC_UTF32BE:
            return in_bytes / 2;
        default:
            return in_bytes;
    }
}

std::int64_t CountEncodedBytes(std::u16string_view in_text, EncodingType in_encoding) noexcept {
    const auto units = static_cast<std::int64_t>(in_text.size());
    std::int64_t pairs = 0;
    std::int64_t more = 0;  // bytes of UTF-8 above one a unit, as if every surrogate were lone
    switch (in_encoding) {
        case EncodingType::ENC_UTF16LE:
        case EncodingType::ENC_UTF16BE:
            return 2 * units;
        case EncodingType::ENC_UTF8:
        case EncodingType::ENC_UTF32LE:
        case EncodingType::ENC_UTF32BE:
            break;
        default:
            return -1;
    }
    for (std::size_t i = 1; i < in_text.size(); ++i) {
        pairs += U16_IS_LEAD(in_text[i - 1]) && U16_IS_TRAIL(in_text[i]);
    }
    if (in_encoding != EncodingType::ENC_UTF8) {
        return 4 * (units - pairs);
    }
    for (const char16_t unit : in_text) {
        more += (unit >= 0x80) + (unit >= 0x800);
    }
    // Two lone surrogates would take 6 bytes, a pair takes 4.
    return units + more - 2 * pairs;
}

}  // namespace Orska::Support
