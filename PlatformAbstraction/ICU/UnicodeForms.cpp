#include "PlatformAbstraction/ICU/UnicodeForms.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "PlatformAbstraction/ICU/Siconv/scalar/Convert.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Cp1252.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Readers.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Writers.h"
#include "PlatformAbstraction/ICU/UnicodeFormsKernels.h"
#include "PlatformAbstraction/base/CpuLevel.h"

namespace Orska::Support {

static_assert(std::endian::native == std::endian::little, "UTF-16 in memory is UTF-16LE here");

namespace {

using namespace Siconv;

constexpr int MEMORY_INDEX = static_cast<int>(EncodingType::ENC_UTF16LE);

bool HasWideUnits(EncodingType in_encoding) noexcept {
    return in_encoding >= EncodingType::ENC_UTF16LE && in_encoding <= EncodingType::ENC_UTF32BE;
}

// Blocks first, then code points. After code points that a block step leaves out, the step is tried
// again. The widths are those of a code unit, in bytes.
template <class Reader, std::uint64_t SOURCE_WIDTH, class Writer, std::uint64_t TARGET_WIDTH,
          UnicodeForms::BlockStep BLOCKS>
std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    constexpr std::uint64_t SCALAR_UNITS = 32;
    for (;;) {
        const std::uint64_t count =
            std::min((io_source.m_length - io_source.m_position) / SOURCE_WIDTH,
                     (io_target.m_length - io_target.m_position) / TARGET_WIDTH);
        const std::uint64_t done = BLOCKS(io_source.m_data + io_source.m_position,
                                          io_target.m_data + io_target.m_position, count);
        io_source.m_position += done * SOURCE_WIDTH;
        io_target.m_position += done * TARGET_WIDTH;
        if (count - done <= SCALAR_UNITS) {
            return ConvertCodePoints<Reader, Writer>(io_source, io_target);
        }
        TranscoderSource part = {io_source.m_data,
                                 io_source.m_position + SCALAR_UNITS * SOURCE_WIDTH,
                                 io_source.m_position};
        const std::int32_t result = ConvertCodePoints<Reader, Writer>(part, io_target);
        io_source.m_position = part.m_position;
        // A code point that the end of the part cut is read again.
        if (result == TRANSCODER_INVALID || result == TRANSCODER_FULL) {
            return result;
        }
    }
}

template <UnicodeForms::BlockStep BLOCKS, bool IS_SOURCE_BIG = false, bool IS_TARGET_BIG = false>
constexpr TranscoderFunction COPY =
    Convert<Utf16Reader<IS_SOURCE_BIG>, 2, Utf16Writer<IS_TARGET_BIG>, 2, BLOCKS>;

TranscoderFunction GetCopy() noexcept {
    return GetCpuLevel() >= CpuLevel::AVX2 ? COPY<UnicodeForms::CopyUtf16_AVX2>
                                           : COPY<UnicodeForms::CopyUtf16_SSE2>;
}

// The single-byte sets. Find returns the byte for a unit, or -1.

template <char16_t LAST>
struct UpTo {
    static constexpr UnicodeForms::ByteRange BLOCKS = {LAST, 0xFFFF};
    static int Find(char16_t in_unit) noexcept { return in_unit <= LAST ? in_unit : -1; }
};

struct Cp1252 {
    static constexpr UnicodeForms::ByteRange BLOCKS = {0xFF, 0x80};
    static int Find(char16_t in_unit) noexcept {
        if (in_unit <= 0xFF && (in_unit & 0xFFE0) != 0x80) {
            return in_unit;
        }
        constexpr char16_t LAST = 0x2122;
        const auto* const end = std::end(CP1252_HIGH);
        const auto* const found =
            in_unit > LAST ? end : std::find(std::begin(CP1252_HIGH), end, in_unit);
        return found == end ? -1 : static_cast<int>(0x80 + (found - std::begin(CP1252_HIGH)));
    }
};

// True for a code point that displays ignore: ICU writes nothing for one that an encoding lacks.
bool IsIgnorable(char32_t in_codePoint) {
    return u_hasBinaryProperty(static_cast<UChar32>(in_codePoint),
                               UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0;
}

// True for most units that are neither ignorable nor surrogates. It has no branches, which would
// cost more than the comparisons.
bool IsOrdinary(char16_t in_unit) {
    const unsigned unit = in_unit;
    const bool isInGap = (unit < 0x034F) | (unit - 0x2070 < 0xD800 - 0x2070);
    return isInGap & (unit != 0x00AD) & (unit != 0x3164);
}

// Converts to a single-byte set. A code point that it lacks becomes the substitute, or nothing, as
// in ICU; one without a byte needs no room.
template <class Set>
std::int32_t ConvertToBytes(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    constexpr std::ptrdiff_t LEAST = 8;  // units; blocks do not pay for fewer
    constexpr std::ptrdiff_t STEP = 32;  // bytes of units before blocks are tried again
    constexpr int SUBSTITUTE = 0x1A;
    const char* from = io_source.m_data + io_source.m_position;
    const char* const end = io_source.m_data + io_source.m_length;
    char* to = io_target.m_data + io_target.m_position;
    char* const limit = io_target.m_data + io_target.m_length;
    std::int32_t result = TRANSCODER_DONE;
    while (from < end && result == TRANSCODER_DONE) {
        const std::ptrdiff_t count = std::min((end - from) / 2, limit - to);
        if (count >= LEAST) {
            const std::uint64_t done = UnicodeForms::Utf16ToBytes_SSE2(
                from, to, static_cast<std::uint64_t>(count), Set::BLOCKS);
            from += 2 * done;
            to += done;
        }
        for (const char* const stop = from + std::min(end - from, STEP); from < stop;) {
            // Mostly one unit is enough.
            for (std::ptrdiff_t left = std::min((stop - from) / 2, limit - to); left > 0; --left) {
                char16_t unit = 0;
                std::memcpy(&unit, from, sizeof(unit));
                int byte = Set::Find(unit);
                if (byte < 0) {
                    if (!IsOrdinary(unit)) {
                        break;
                    }
                    byte = SUBSTITUTE;
                }
                *to++ = static_cast<char>(byte);
                from += sizeof(unit);
            }
            if (from == stop) {
                break;
            }
            char32_t codePoint = 0;
            const std::int32_t used =
                Utf16Reader<false>::Read(reinterpret_cast<const unsigned char*>(from),
                                         static_cast<std::uint64_t>(end - from), codePoint);
            const bool hasByte = used == 2 && Set::Find(static_cast<char16_t>(codePoint)) >= 0;
            const bool isWritten = used > 0 && (hasByte || !IsIgnorable(codePoint));
            if (used < 0 || (isWritten && to == limit)) {
                result = used < 0 ? used : TRANSCODER_FULL;
                break;
            }
            if (isWritten) {
                *to++ = SUBSTITUTE;
            }
            from += used;
        }
    }
    io_source.m_position = static_cast<std::uint64_t>(from - io_source.m_data);
    io_target.m_position = static_cast<std::uint64_t>(to - io_target.m_data);
    return result;
}

// As latin1, but each byte from 80 on is malformed and becomes U+FFFD.
std::int32_t ConvertFromAscii(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    const char* const from = io_source.m_data + io_source.m_position;
    char* const to = io_target.m_data + io_target.m_position;
    const std::int32_t result = GetTranscoder(static_cast<int>(EncodingType::ENC_LATIN1),
                                              MEMORY_INDEX)(io_source, io_target);
    const auto count = io_source.m_data + io_source.m_position - from;
    char all = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        all |= from[i];
    }
    for (std::ptrdiff_t i = 0; (all & 0x80) != 0 && i < count; ++i) {
        constexpr char16_t REPLACEMENT = 0xFFFD;
        if ((from[i] & 0x80) != 0) {
            std::memcpy(to + 2 * i, &REPLACEMENT, sizeof(REPLACEMENT));
        }
    }
    return result;
}

}  // namespace

TranscoderFunction GetUtf16Encoder(EncodingType in_encoding) noexcept {
    switch (in_encoding) {
        case EncodingType::ENC_UTF8:
            return GetTranscoder(MEMORY_INDEX, GetTranscoderIndex(in_encoding));
        case EncodingType::ENC_UTF16LE:
            return GetCopy();
        case EncodingType::ENC_UTF16BE:
            return COPY<UnicodeForms::Utf16ToBig_SSE2, false, true>;
        case EncodingType::ENC_UTF32LE:
            return Convert<Utf16Reader<false>, 2, Utf32Writer<false>, 4,
                           UnicodeForms::Utf16ToUtf32_SSE2>;
        case EncodingType::ENC_UTF32BE:
            return ConvertCodePoints<Utf16Reader<false>, Utf32Writer<true>>;
        case EncodingType::ENC_LATIN1:
            return ConvertToBytes<UpTo<0xFF>>;
        case EncodingType::ENC_CP1252:
        case EncodingType::ENC_IBM5348:
            return ConvertToBytes<Cp1252>;
        case EncodingType::ENC_US_ASCII:
            return ConvertToBytes<UpTo<0x7F>>;
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
            return COPY<UnicodeForms::Utf16FromBig_SSE2, true, false>;
        case EncodingType::ENC_UTF32LE:
            return Convert<Utf32Reader<false>, 4, Utf16Writer<false>, 2,
                           UnicodeForms::Utf32ToUtf16_SSE2>;
        case EncodingType::ENC_UTF32BE:
            return ConvertCodePoints<Utf32Reader<true>, Utf16Writer<false>>;
        case EncodingType::ENC_US_ASCII:
            return ConvertFromAscii;
        default:
            return nullptr;
    }
}

std::uint64_t GetMostUtf16Units(EncodingType in_encoding, std::uint64_t in_bytes) noexcept {
    // One more for a unit cut off at the end.
    return HasWideUnits(in_encoding) ? in_bytes / 2 + in_bytes % 2 : in_bytes;
}

std::int64_t CountEncodedBytes(std::u16string_view in_text, EncodingType in_encoding) noexcept {
    constexpr std::size_t MOST = 0x4000;  // units whose extra bytes fit into 16 bits
    auto count = static_cast<std::int64_t>(in_text.size());
    const bool isUtf8 = in_encoding == EncodingType::ENC_UTF8;
    if (!isUtf8 && !HasWideUnits(in_encoding)) {
        return -1;
    }
    if (in_encoding == EncodingType::ENC_UTF16LE || in_encoding == EncodingType::ENC_UTF16BE) {
        return 2 * count;
    }
    // As wide as the units, so that the compiler handles eight at once.
    std::uint16_t found = 0;
    for (std::size_t start = 0; start < in_text.size(); start += MOST) {
        std::uint16_t extra = 0;
        for (const char16_t unit : in_text.substr(start, MOST)) {
            extra = static_cast<std::uint16_t>(extra + (unit >= 0x80) + (unit >= 0x800));
            found |= static_cast<std::uint16_t>((unit & 0xF800) == 0xD800);
        }
        count += isUtf8 ? extra : 0;
    }
    // A pair is one code point, which takes four bytes and not twice three.
    const std::int64_t lessForPair = isUtf8 ? 2 : 1;
    for (std::size_t i = 1; found != 0 && i < in_text.size(); ++i) {
        count -= U16_IS_LEAD(in_text[i - 1]) && U16_IS_TRAIL(in_text[i]) ? lessForPair : 0;
    }
    return isUtf8 ? count : 4 * count;
}

}  // namespace Orska::Support
