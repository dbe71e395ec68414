#include "PlatformAbstraction/strings/StringCodec.h"

#include <emmintrin.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <new>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/IcuConverters.h"
#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "PlatformAbstraction/strings/TextPool.h"

namespace Orska::Support {

namespace {

static_assert(std::endian::native == std::endian::little);

constexpr char SOURCE[] = "PlatformAbstraction\\StringCodec";

using Byte = std::uint8_t;

constexpr char16_t REPLACEMENT = 0xFFFD;
constexpr Byte SUBSTITUTE = 0x1A;  // of the single-byte sets

// What cp1252 has at 0x80 to 0x9F. The five bytes it leaves open stand for the C1 controls.
constexpr char16_t CP1252_UPPER[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
static_assert(std::size(CP1252_UPPER) == 0x20);

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

// Bytes to UTF-16. Each decoder writes at most as many units as its encoding's row in DecodeText
// makes room for, and returns the end of what it wrote.

constexpr std::ptrdiff_t BLOCK = 16;  // bytes or UTF-16 units that are looked at and copied at once

/// Copies a block of bytes if it is ASCII. Reads 16 bytes and writes 16 units.
bool CopyAsciiBlock(const Byte* in_from, char16_t* out_to) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_from));
    if (_mm_movemask_epi8(bytes) != 0) {
        return false;
    }
    auto* to = reinterpret_cast<__m128i*>(out_to);
    _mm_storeu_si128(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    _mm_storeu_si128(to + 1, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    return true;
}

/// Copies a block of units if it is ASCII. Reads 16 units and writes 16 bytes.
bool CopyAsciiBlock(const char16_t* in_from, Byte* out_to) {
    const auto* from = reinterpret_cast<const __m128i*>(in_from);
    const __m128i low = _mm_loadu_si128(from);
    const __m128i high = _mm_loadu_si128(from + 1);
    const __m128i above = _mm_and_si128(_mm_or_si128(low, high), _mm_set1_epi16(-0x80));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF) {
        return false;
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_to), _mm_packus_epi16(low, high));
    return true;
}

/// Copies whole blocks of ASCII and gives the end of what is then worth looking at unit by unit.
template <typename From, typename To>
const From* CopyAscii(const From*& io_from, const From* in_end, To*& io_to) {
    while (in_end - io_from >= BLOCK) {
        if (!CopyAsciiBlock(io_from, io_to)) {
            return io_from + BLOCK;
        }
        io_from += BLOCK;
        io_to += BLOCK;
    }
    return in_end;
}

char16_t* AppendUnits(char16_t* out_to, char32_t in_codePoint) {
    std::ptrdiff_t length = 0;
    U16_APPEND_UNSAFE(out_to, length, in_codePoint);
    return out_to + length;
}

char16_t* DecodeUtf8(const Byte* in_from, const Byte* in_end, char16_t* out_to) {
    while (in_from != in_end) {
        const Byte* const blockEnd = CopyAscii(in_from, in_end, out_to);
        while (in_from < blockEnd) {
            if (*in_from < 0x80) {
                *out_to++ = *in_from++;
                continue;
            }
            char32_t codePoint = 0;
            std::ptrdiff_t length = 0;
            // Each longest piece that could begin a sequence becomes one U+FFFD.
            U8_NEXT_OR_FFFD(in_from, length, in_end - in_from, codePoint);
            in_from += length;
            out_to = AppendUnits(out_to, codePoint);
        }
    }
    return out_to;
}

constexpr bool IsSurrogate(char16_t in_unit) { return (in_unit & 0xF800) == 0xD800; }
constexpr bool IsLead(char16_t in_unit) { return (in_unit & 0xFC00) == 0xD800; }
constexpr bool IsTrail(char16_t in_unit) { return (in_unit & 0xFC00) == 0xDC00; }
constexpr char16_t Swap(char16_t in_unit) {
    return static_cast<char16_t>((in_unit << 8) | (in_unit >> 8));
}

bool HasSurrogate(const char16_t* in_begin, const char16_t* in_end) {
    // As wide as the units, which lets the compiler look at eight at once.
    std::uint16_t found = 0;
    for (const char16_t* unit = in_begin; unit != in_end; ++unit) {
        found |= static_cast<std::uint16_t>(IsSurrogate(*unit));
    }
    return found != 0;
}

bool HasLoneSurrogate(const char16_t* in_begin, const char16_t* in_end) {
    if (in_begin == in_end) {
        return false;
    }
    std::uint16_t found = IsTrail(in_begin[0]) || IsLead(in_end[-1]);
    for (const char16_t* unit = in_begin; unit != in_end - 1; ++unit) {
        found |= static_cast<std::uint16_t>(IsLead(unit[0]) != IsTrail(unit[1]));
    }
    return found != 0;
}

/// Makes every surrogate without its partner U+FFFD.
void ReplaceLoneSurrogates(char16_t* io_begin, char16_t* io_end) {
    if (!HasLoneSurrogate(io_begin, io_end)) {
        return;
    }
    for (char16_t* unit = io_begin; unit != io_end; ++unit) {
        if (IsLead(*unit) && io_end - unit > 1 && IsTrail(unit[1])) {
            ++unit;
        } else if (IsSurrogate(*unit)) {
            *unit = REPLACEMENT;
        }
    }
}

template <bool IsBigEndian>
char16_t* DecodeUtf16(const Byte* in_from, const Byte* in_end, char16_t* out_to) {
    const std::ptrdiff_t count = (in_end - in_from) / 2;
    std::memcpy(out_to, in_from, static_cast<std::size_t>(count) * 2);
    char16_t* const end = out_to + count;
    if constexpr (IsBigEndian) {
        std::transform(out_to, end, out_to, Swap);
    }
    // A byte left over is one error, together with a lead surrogate that may stand before it.
    const bool isOdd = (in_end - in_from) % 2 != 0;
    const bool endsInLead = count != 0 && IsLead(end[-1]);
    ReplaceLoneSurrogates(out_to, end);
    if (isOdd && !endsInLead) {
        *end = REPLACEMENT;
        return end + 1;
    }
    return end;
}

template <bool IsBigEndian>
char16_t* DecodeUtf32(const Byte* in_from, const Byte* in_end, char16_t* out_to) {
    for (; in_end - in_from >= 4; in_from += 4) {
        const Byte* const b = in_from;
        const char32_t codePoint = IsBigEndian
                                       ? (char32_t{b[0]} << 24) | (b[1] << 16) | (b[2] << 8) | b[3]
                                       : (char32_t{b[3]} << 24) | (b[2] << 16) | (b[1] << 8) | b[0];
        const bool isLegal = codePoint <= 0x10FFFF && !U_IS_SURROGATE(codePoint);
        out_to = AppendUnits(out_to, isLegal ? codePoint : char32_t{REPLACEMENT});
    }
    if (in_from != in_end) {
        *out_to++ = REPLACEMENT;
    }
    return out_to;
}

struct Latin1 {
    static constexpr char16_t Decode(Byte in_byte) { return in_byte; }
    /// The byte of a unit, or -1.
    static int Encode(char16_t in_unit) { return in_unit <= 0xFF ? in_unit : -1; }
};

struct UsAscii {
    static constexpr char16_t Decode(Byte in_byte) {
        return in_byte < 0x80 ? in_byte : REPLACEMENT;
    }
    static int Encode(char16_t in_unit) { return in_unit < 0x80 ? in_unit : -1; }
};

struct Cp1252 {
    static constexpr char16_t Decode(Byte in_byte) {
        return (in_byte & 0xE0) == 0x80 ? CP1252_UPPER[in_byte & 0x1F] : in_byte;
    }
    static int Encode(char16_t in_unit) {
        if (in_unit < 0x80 || (in_unit >= 0xA0 && in_unit <= 0xFF)) {
            return in_unit;
        }
        const auto* found = std::find(std::begin(CP1252_UPPER), std::end(CP1252_UPPER), in_unit);
        return found == std::end(CP1252_UPPER)
                   ? -1
                   : static_cast<int>(0x80 + (found - std::begin(CP1252_UPPER)));
    }
};

template <typename Set>
char16_t* DecodeSingleByte(const Byte* in_from, const Byte* in_end, char16_t* out_to) {
    while (in_from != in_end) {
        const Byte* const blockEnd = CopyAscii(in_from, in_end, out_to);
        out_to = std::transform(in_from, blockEnd, out_to, Set::Decode);
        in_from = blockEnd;
    }
    return out_to;
}

// UTF-16 to bytes.

/// How many units stand for another one as its trail.
std::size_t PairCount(const char16_t* in_begin, const char16_t* in_end) {
    std::size_t count = 0;
    if (HasSurrogate(in_begin, in_end)) {
        for (const char16_t* unit = in_begin; unit + 1 < in_end; ++unit) {
            count += IsLead(unit[0]) && IsTrail(unit[1]);
        }
    }
    return count;
}

/// The bytes that the UTF-8 form takes, with three for a surrogate without its partner.
std::size_t Utf8Length(const char16_t* in_begin, const char16_t* in_end) {
    constexpr std::ptrdiff_t MOST = 0x4000;  // units whose extra bytes fit into 16 bits
    std::size_t length = static_cast<std::size_t>(in_end - in_begin);
    for (const char16_t* unit = in_begin; unit != in_end;) {
        const char16_t* const end = unit + std::min(MOST, in_end - unit);
        std::uint16_t extra = 0;
        for (; unit != end; ++unit) {
            extra = static_cast<std::uint16_t>(extra + (*unit >= 0x80) + (*unit >= 0x800));
        }
        length += extra;
    }
    // A pair takes four bytes, not twice three.
    return length - 2 * PairCount(in_begin, in_end);
}

/// The code point at the front, which is taken; U+FFFD for a surrogate without its partner.
char32_t NextCodePoint(const char16_t*& io_from, const char16_t* in_end) {
    const char16_t unit = *io_from++;
    if (!IsSurrogate(unit)) {
        return unit;
    }
    if (IsLead(unit) && io_from != in_end && IsTrail(*io_from)) {
        return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, *io_from++));
    }
    return REPLACEMENT;
}

Byte* AppendUtf8(Byte* out_to, char32_t in_codePoint) {
    std::ptrdiff_t length = 0;
    U8_APPEND_UNSAFE(out_to, length, in_codePoint);
    return out_to + length;
}

std::string EncodeUtf8(const char16_t* in_from, const char16_t* in_end) {
    std::string bytes(Utf8Length(in_from, in_end), '\0');
    auto* to = reinterpret_cast<Byte*>(bytes.data());
    while (in_from != in_end) {
        const char16_t* const blockEnd = CopyAscii(in_from, in_end, to);
        while (in_from < blockEnd) {
            to = AppendUtf8(to, NextCodePoint(in_from, in_end));
        }
    }
    return bytes;
}

std::string EncodeUtf16Bytes(const char16_t* in_from, const char16_t* in_end, bool in_isBigEndian) {
    std::u16string units(in_from, in_end);
    ReplaceLoneSurrogates(units.data(), units.data() + units.size());
    if (in_isBigEndian) {
        std::transform(units.begin(), units.end(), units.begin(), Swap);
    }
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

std::size_t CodePointCount(const char16_t* in_begin, const char16_t* in_end) {
    return static_cast<std::size_t>(in_end - in_begin) - PairCount(in_begin, in_end);
}

std::string EncodeUtf32Bytes(const char16_t* in_from, const char16_t* in_end, bool in_isBigEndian) {
    std::string bytes(CodePointCount(in_from, in_end) * sizeof(char32_t), '\0');
    for (char* to = bytes.data(); in_from != in_end; to += sizeof(char32_t)) {
        char32_t codePoint = NextCodePoint(in_from, in_end);
        if (in_isBigEndian) {
            codePoint = __builtin_bswap32(codePoint);
        }
        std::memcpy(to, &codePoint, sizeof codePoint);
    }
    return bytes;
}

template <typename Set>
std::string EncodeSingleByte(const char16_t* in_from, const char16_t* in_end) {
    std::string bytes(static_cast<std::size_t>(in_end - in_from), '\0');
    auto* to = reinterpret_cast<Byte*>(bytes.data());
    const Byte* const begin = to;
    while (in_from != in_end) {
        const char16_t* const blockEnd = CopyAscii(in_from, in_end, to);
        while (in_from < blockEnd) {
            const int byte = Set::Encode(*in_from);
            if (byte >= 0) {
                *to++ = static_cast<Byte>(byte);
                ++in_from;
            } else if (!IsIgnorable(NextCodePoint(in_from, in_end))) {
                *to++ = SUBSTITUTE;
            }
        }
    }
    bytes.resize(static_cast<std::size_t>(to - begin));
    return bytes;
}

void CheckStatus(UErrorCode in_status, const TraceSite& in_site) {
    if (U_FAILURE(in_status)) {
        ORSKA_THROW(in_site, ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErr"));
    }
}

icu::UnicodeString* DecodeByName(const char* in_bytes, std::int32_t in_lengthInBytes,
                                 EncodingType in_encoding) {
    constexpr TraceSite SITE = {"Orska::Support::DecodeText", SOURCE, 0};
    const icu::LocalUConverterPointer converter = OpenConverter(in_encoding, SITE);
    TextOwner text(AcquireText(0));
    UErrorCode status = U_ZERO_ERROR;
    DecodeThroughIcu(*converter, {in_bytes, static_cast<std::size_t>(in_lengthInBytes)}, *text,
                     status);
    CheckStatus(status, SITE);
    return text.release();
}

std::string EncodeByName(std::u16string_view in_text, EncodingType in_encoding) {
    constexpr TraceSite SITE = {"Orska::Support::EncodeText", SOURCE, 0};
    const icu::LocalUConverterPointer converter = OpenConverter(in_encoding, SITE);
    UErrorCode status = U_ZERO_ERROR;
    const std::int64_t length = MeasureThroughIcu(*converter, in_text, status);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    int attempts = 0;
    EncodeThroughIcu(*converter, in_text, bytes.data(), length, attempts, status);
    CheckStatus(status, SITE);
    return bytes;
}

using Decoder = char16_t* (*)(const Byte* in_from, const Byte* in_end, char16_t* out_to);

/// @param BytesPerUnit  the fewest bytes that a UTF-16 unit of the result comes from; what is left
///                      at the end can give one more
template <Decoder Decode, std::int32_t BytesPerUnit>
[[gnu::noinline]] icu::UnicodeString* DecodeHere(const char* in_bytes,
                                                 std::int32_t in_lengthInBytes) {
    const std::int32_t mostUnits =
        in_lengthInBytes / BytesPerUnit + (in_lengthInBytes % BytesPerUnit != 0 ? 1 : 0);
    icu::UnicodeString* const text = AcquireText(mostUnits);
    if (in_lengthInBytes != 0) {
        const auto* from = reinterpret_cast<const Byte*>(in_bytes);
        char16_t* const units = GetUnits(*text);
        const auto length =
            static_cast<std::int32_t>(Decode(from, from + in_lengthInBytes, units) - units);
        if (length != mostUnits) {
            text->truncate(length);
        }
    }
    return text;
}

}  // namespace

icu::UnicodeString* DecodeText(const char* in_bytes, std::int32_t in_lengthInBytes,
                               EncodingType in_encoding) {
    switch (in_encoding) {
        case EncodingType::ENC_UTF8:
            return DecodeHere<DecodeUtf8, 1>(in_bytes, in_lengthInBytes);
        case EncodingType::ENC_UTF16LE:
            return DecodeHere<DecodeUtf16<false>, 2>(in_bytes, in_lengthInBytes);
        case EncodingType::ENC_UTF16BE:
            return DecodeHere<DecodeUtf16<true>, 2>(in_bytes, in_lengthInBytes);
        case EncodingType::ENC_UTF32LE:
            return DecodeHere<DecodeUtf32<false>, 2>(in_bytes, in_lengthInBytes);
        case EncodingType::ENC_UTF32BE:
            return DecodeHere<DecodeUtf32<true>, 2>(in_bytes, in_lengthInBytes);
        case EncodingType::ENC_LATIN1:
            return DecodeHere<DecodeSingleByte<Latin1>, 1>(in_bytes, in_lengthInBytes);
        case EncodingType::ENC_CP1252:
            return DecodeHere<DecodeSingleByte<Cp1252>, 1>(in_bytes, in_lengthInBytes);
        case EncodingType::ENC_US_ASCII:
            return DecodeHere<DecodeSingleByte<UsAscii>, 1>(in_bytes, in_lengthInBytes);
        default:
            return DecodeByName(in_bytes, in_lengthInBytes, in_encoding);
    }
}

std::string EncodeText(const icu::UnicodeString& in_text, EncodingType in_encoding) {
    const char16_t* const from = in_text.getBuffer();
    const char16_t* const end = from + in_text.length();
    switch (in_encoding) {
        case EncodingType::ENC_UTF8:
            return EncodeUtf8(from, end);
        case EncodingType::ENC_UTF16LE:
            return EncodeUtf16Bytes(from, end, false);
        case EncodingType::ENC_UTF16BE:
            return EncodeUtf16Bytes(from, end, true);
        case EncodingType::ENC_UTF32LE:
            return EncodeUtf32Bytes(from, end, false);
        case EncodingType::ENC_UTF32BE:
            return EncodeUtf32Bytes(from, end, true);
        case EncodingType::ENC_LATIN1:
            return EncodeSingleByte<Latin1>(from, end);
        case EncodingType::ENC_CP1252:
            return EncodeSingleByte<Cp1252>(from, end);
        case EncodingType::ENC_US_ASCII:
            return EncodeSingleByte<UsAscii>(from, end);
        default:
            return EncodeByName({from, end}, in_encoding);
    }
}

std::u16string EncodeUtf16(const icu::UnicodeString& in_text) {
    std::u16string units(in_text.getBuffer(), static_cast<std::size_t>(in_text.length()));
    ReplaceLoneSurrogates(units.data(), units.data() + units.size());
    return units;
}

std::wstring EncodeWide(const icu::UnicodeString& in_text) {
    const char16_t* from = in_text.getBuffer();
    const char16_t* const end = from + in_text.length();
    if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
        const std::u16string units = EncodeUtf16(in_text);
        return {units.begin(), units.end()};
    } else {
        std::wstring units(CodePointCount(from, end), L'\0');
        for (wchar_t& unit : units) {
            unit = static_cast<wchar_t>(NextCodePoint(from, end));
        }
        return units;
    }
}

}  // namespace Orska::Support
