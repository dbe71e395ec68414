#include "PlatformAbstraction/ICU/UnicodeForms.h"

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
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {

static_assert(std::endian::native == std::endian::little, "UTF-16 in memory is UTF-16LE here");

namespace {

using namespace Siconv;

constexpr int MEMORY_INDEX = static_cast<int>(EncodingType::ENC_UTF16LE);

// Blocks first, then code points. A block step that meets code points it leaves out is tried again
// behind them. The widths are those of a code unit, in bytes.
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
        const bool isAdvanced = part.m_position > io_source.m_position;
        io_source.m_position = part.m_position;
        // A code point that only the end of the part cut off is met again.
        const bool isOnlyCut = result == TRANSCODER_INCOMPLETE && isAdvanced;
        if (result != TRANSCODER_DONE && !isOnlyCut) {
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

// What a single-byte set has for a unit from 80 on, or -1; below, all of them have ASCII.

template <char16_t LAST>
int FindUpTo(char16_t in_unit) noexcept {
    return in_unit <= LAST ? in_unit : -1;
}

int FindInCp1252(char16_t in_unit) noexcept {
    if (in_unit >= 0xA0 && in_unit <= 0xFF) {
        return in_unit;
    }
    const auto* const found = std::find(std::begin(CP1252_HIGH), std::end(CP1252_HIGH), in_unit);
    return found == std::end(CP1252_HIGH)
               ? -1
               : static_cast<int>(0x80 + (found - std::begin(CP1252_HIGH)));
}

struct CodePointRange {
    char32_t m_first;
    char32_t m_last;
};

// The default ignorable code points as ICU's substitution callback lists them: where an encoding
// lacks one of these, ICU writes nothing.
constexpr CodePointRange IGNORABLE[] = {
    {0x00AD, 0x00AD},   {0x034F, 0x034F},   {0x061C, 0x061C}, {0x115F, 0x1160}, {0x17B4, 0x17B5},
    {0x180B, 0x180F},   {0x200B, 0x200F},   {0x202A, 0x202E}, {0x2060, 0x206F}, {0x3164, 0x3164},
    {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFF8}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
};

bool IsIgnorable(char32_t in_codePoint) {
    return std::any_of(std::begin(IGNORABLE), std::end(IGNORABLE),
                       [&](const CodePointRange& range) {
                           return range.m_first <= in_codePoint && in_codePoint <= range.m_last;
                       });
}

// To a single-byte set. What it lacks becomes the substitute, or nothing, as ICU has it; a code
// point that gives no byte goes even into a full target.
template <int (*FIND)(char16_t), char16_t LAST_OF_BLOCKS>
std::int32_t ConvertToBytes(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    constexpr std::uint64_t SCALAR_UNITS = 16;
    constexpr char SUBSTITUTE = 0x1A;
    while (io_source.m_position < io_source.m_length) {
        const std::uint64_t count = std::min((io_source.m_length - io_source.m_position) / 2,
                                             io_target.m_length - io_target.m_position);
        const std::uint64_t done = UnicodeForms::Utf16ToBytes_SSE2(
            io_source.m_data + io_source.m_position, io_target.m_data + io_target.m_position, count,
            LAST_OF_BLOCKS);
        io_source.m_position += 2 * done;
        io_target.m_position += done;
        for (std::uint64_t i = 0; i < SCALAR_UNITS && io_source.m_position < io_source.m_length;
             ++i) {
            char32_t codePoint = 0;
            const auto* const at = reinterpret_cast<const unsigned char*>(io_source.m_data);
            const std::int32_t used = Utf16Reader<false>::Read(
                at + io_source.m_position, io_source.m_length - io_source.m_position, codePoint);
            if (used < 0) {
                return used;
            }
            const int byte = codePoint < 0x80 ? static_cast<int>(codePoint)
                             : used == 2      ? FIND(static_cast<char16_t>(codePoint))
                                              : -1;
            if (byte >= 0 || !IsIgnorable(codePoint)) {
                if (io_target.m_position == io_target.m_length) {
                    return TRANSCODER_FULL;
                }
                io_target.m_data[io_target.m_position++] =
                    byte >= 0 ? static_cast<char>(byte) : SUBSTITUTE;
            }
            io_source.m_position += static_cast<std::uint64_t>(used);
        }
    }
    return TRANSCODER_DONE;
}

// As latin1, but bytes from 80 on are malformed, which each gives U+FFFD.
std::int32_t ConvertFromAscii(TranscoderSource& io_source, TranscoderTarget& io_target) noexcept {
    const std::uint64_t start = io_target.m_position;
    const std::int32_t result = GetTranscoder(static_cast<int>(EncodingType::ENC_LATIN1),
                                              MEMORY_INDEX)(io_source, io_target);
    for (std::uint64_t at = start; at < io_target.m_position; at += sizeof(char16_t)) {
        char16_t unit = 0;
        std::memcpy(&unit, io_target.m_data + at, sizeof(unit));
        unit = unit < 0x80 ? unit : 0xFFFD;
        std::memcpy(io_target.m_data + at, &unit, sizeof(unit));
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
            return ConvertToBytes<FindUpTo<0xFF>, 0xFF>;
        case EncodingType::ENC_CP1252:
        case EncodingType::ENC_IBM5348:
            return ConvertToBytes<FindInCp1252, 0x7F>;
        case EncodingType::ENC_US_ASCII:
            return ConvertToBytes<FindUpTo<0x7F>, 0x7F>;
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
    // One more for what is cut off at the end.
    return EncodingInfo::GetCodeUnitWidth(in_encoding) == 1 ? in_bytes
                                                            : in_bytes / 2 + in_bytes % 2;
}

std::int64_t CountEncodedBytes(std::u16string_view in_text, EncodingType in_encoding) noexcept {
    constexpr std::size_t MOST = 0x4000;  // units whose extra bytes fit into 16 bits
    const bool isUtf8 = in_encoding == EncodingType::ENC_UTF8;
    const std::int64_t width = EncodingInfo::GetCodeUnitWidth(in_encoding);
    if (!isUtf8 && width == 1) {
        return -1;
    }
    std::int64_t count = static_cast<std::int64_t>(in_text.size());
    if (width == 2) {
        return 2 * count;
    }
    // As wide as the units, which lets the compiler look at eight at once.
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
    return count * width;
}

}  // namespace Orska::Support
