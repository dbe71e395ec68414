#include "PlatformAbstraction/ICU/ShortText.h"

#include <emmintrin.h>
#include <unicode/utf16.h>

#include <cstring>

#include "PlatformAbstraction/ICU/Siconv/ShortTextKernels.h"
#include "PlatformAbstraction/ICU/UnicodeForms.h"
#include "PlatformAbstraction/base/CpuLevel.h"
#include "PlatformAbstraction/strings/TextPool.h"
#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

namespace {

constexpr std::size_t BLOCK = 8;  // units of UTF-16 in a vector

__m128i Load(const void* in_at) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(in_at));
}

void Store(void* out_at, __m128i in_vector) noexcept {
    _mm_storeu_si128(static_cast<__m128i*>(out_at), in_vector);
}

// Sets each 16-bit lane whose upper bits are those of the kind to all ones.
__m128i IsKind(__m128i in_units, int in_mask, int in_kind) noexcept {
    return _mm_cmpeq_epi16(_mm_and_si128(in_units, _mm_set1_epi16(static_cast<short>(in_mask))),
                           _mm_set1_epi16(static_cast<short>(in_kind)));
}

// True if every lead has a trail after it and every trail a lead before it. `in_last` is the start
// of the last block, which may overlap the one before it.
bool HasPairsOnly(const char* in_units, std::size_t in_last) noexcept {
    std::uint64_t leads = 0;
    std::uint64_t trails = 0;
    const auto look = [&](std::size_t in_at) {
        const __m128i units = Load(in_units + 2 * in_at);
        const __m128i isLead = IsKind(units, 0xFC00, 0xD800);
        const __m128i isTrail = IsKind(units, 0xFC00, 0xDC00);
        const auto both =
            static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(isLead, isTrail)));
        leads |= std::uint64_t{both & 0xFF} << in_at;
        trails |= std::uint64_t{both >> 8} << in_at;
    };
    for (std::size_t at = 0; at < in_last; at += BLOCK) {
        look(at);
    }
    look(in_last);
    return leads << 1 == trails;
}

// Copies up to 32 units of UTF-16 if they are well-formed or, below 8 units, have no surrogates. It
// reads all units before it writes any.
bool CopyUtf16(const char* in_units, std::size_t in_count, char* out_units) noexcept {
    if (in_count == 0) {
        return true;  // the pointers may be null
    }
    if (in_count < BLOCK) {
        char16_t units[BLOCK] = {};
        std::memcpy(units, in_units, 2 * in_count);
        if (_mm_movemask_epi8(IsKind(Load(units), 0xF800, 0xD800)) != 0) {
            return false;
        }
        std::memcpy(out_units, units, 2 * in_count);
        return true;
    }
    if (in_count > MOST_SHORT_UNITS) {
        return false;
    }
    const std::size_t last = in_count - BLOCK;
    // Two blocks from the start and two to the end; in a shorter text they coincide.
    const std::size_t second = in_count > 2 * BLOCK ? BLOCK : 0;
    const std::size_t third = in_count > 2 * BLOCK ? last - BLOCK : last;
    const __m128i blocks[] = {Load(in_units), Load(in_units + 2 * second),
                              Load(in_units + 2 * third), Load(in_units + 2 * last)};
    const __m128i surrogates = _mm_or_si128(
        _mm_or_si128(IsKind(blocks[0], 0xF800, 0xD800), IsKind(blocks[1], 0xF800, 0xD800)),
        _mm_or_si128(IsKind(blocks[2], 0xF800, 0xD800), IsKind(blocks[3], 0xF800, 0xD800)));
    if (_mm_movemask_epi8(surrogates) != 0 && !HasPairsOnly(in_units, last)) {
        return false;
    }
    Store(out_units, blocks[0]);
    Store(out_units + 2 * second, blocks[1]);
    Store(out_units + 2 * third, blocks[2]);
    Store(out_units + 2 * last, blocks[3]);
    return true;
}

std::int64_t EncodeUtf16(std::u16string_view in_text, char* out_buffer,
                         std::int64_t in_capacity) noexcept {
    const auto bytes = static_cast<std::int64_t>(2 * in_text.size());
    const bool isDone =
        bytes <= in_capacity &&
        CopyUtf16(reinterpret_cast<const char*>(in_text.data()), in_text.size(), out_buffer);
    return isDone ? bytes : -1;
}

std::int64_t DecodeUtf16(std::string_view in_bytes, char16_t* out_units) noexcept {
    const std::size_t units = in_bytes.size() / 2;
    const bool isDone = in_bytes.size() % 2 == 0 &&
                        CopyUtf16(in_bytes.data(), units, reinterpret_cast<char*>(out_units));
    return isDone ? static_cast<std::int64_t>(units) : -1;
}

// Joins four surrogate pairs in 32-bit lanes to code points.
__m128i JoinPairs(__m128i in_units) noexcept {
    const __m128i upper = _mm_slli_epi32(_mm_and_si128(in_units, _mm_set1_epi32(0x3FF)), 10);
    const __m128i lower = _mm_and_si128(_mm_srli_epi32(in_units, 16), _mm_set1_epi32(0x3FF));
    return _mm_add_epi32(_mm_or_si128(upper, lower), _mm_set1_epi32(0x10000));
}

// Converts blocks without surrogates, or of pairs only, while there is room for them. Returns the
// units converted.
std::size_t EncodeUtf32Blocks(std::u16string_view in_text, char*& io_to,
                              const char* in_end) noexcept {
    std::size_t done = 0;
    for (; done + BLOCK <= in_text.size(); done += BLOCK) {
        const __m128i units = Load(in_text.data() + done);
        const __m128i kinds = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xFC00)));
        const __m128i pairs = _mm_set1_epi32(static_cast<int>(0xDC00D800));
        if (in_end - io_to >= 16 && _mm_movemask_epi8(_mm_cmpeq_epi16(kinds, pairs)) == 0xFFFF) {
            Store(io_to, JoinPairs(units));
            io_to += 16;
        } else if (in_end - io_to >= 32 && _mm_movemask_epi8(IsKind(units, 0xF800, 0xD800)) == 0) {
            Store(io_to, _mm_unpacklo_epi16(units, _mm_setzero_si128()));
            Store(io_to + 16, _mm_unpackhi_epi16(units, _mm_setzero_si128()));
            io_to += 32;
        } else {
            break;
        }
    }
    return done;
}

std::int64_t EncodeUtf32(std::u16string_view in_text, char* out_buffer,
                         std::int64_t in_capacity) noexcept {
    const char* const end = out_buffer + in_capacity;
    char* to = out_buffer;
    std::size_t at = EncodeUtf32Blocks(in_text, to, end);
    while (at < in_text.size()) {
        UChar32 codePoint = 0;
        U16_NEXT(in_text.data(), at, in_text.size(), codePoint);
        if (U_IS_SURROGATE(codePoint) || end - to < 4) {
            return -1;
        }
        std::memcpy(to, &codePoint, sizeof codePoint);
        to += sizeof codePoint;
    }
    return to - out_buffer;
}

// The general function leaves no scratch after its output.
std::int64_t DecodeUtf32(std::string_view in_bytes, char16_t* out_units) noexcept {
    static const TranscoderFunction s_decoder = GetUtf16Decoder(EncodingType::ENC_UTF32LE);
    TranscoderSource source{in_bytes.data(), in_bytes.size(), 0};
    TranscoderTarget target{reinterpret_cast<char*>(out_units), 2 * SHORT_UNITS_ROOM, 0};
    return s_decoder(source, target) == TRANSCODER_DONE
               ? static_cast<std::int64_t>(target.m_position / 2)
               : -1;
}

std::int64_t RefuseText(std::u16string_view, char*, std::int64_t) noexcept { return -1; }

std::int64_t RefuseBytes(std::string_view, char16_t*) noexcept { return -1; }

struct ShortFunctions {
    ShortEncoder m_encoder;
    ShortDecoder m_decoder;
};

ShortFunctions GetFunctions(EncodingType in_encoding) noexcept {
    if (in_encoding == EncodingType::ENC_UTF16LE) return {EncodeUtf16, DecodeUtf16};
    if (in_encoding == EncodingType::ENC_UTF32LE) return {EncodeUtf32, DecodeUtf32};
    if (in_encoding == EncodingType::ENC_UTF8 && GetCpuLevel() >= CpuLevel::SSE42) {
        return {Siconv::ShortUtf16ToUtf8_SSE42, Siconv::ShortUtf8ToUtf16_SSE42};
    }
    return {RefuseText, RefuseBytes};
}

}  // namespace

ShortEncoder GetShortEncoder(EncodingType in_encoding) noexcept {
    return GetFunctions(in_encoding).m_encoder;
}

ShortDecoder GetShortDecoder(EncodingType in_encoding) noexcept {
    return GetFunctions(in_encoding).m_decoder;
}

bool DecodeShortText(std::string_view in_bytes, ShortDecoder in_decoder,
                     orska_wstring& out_result) {
    char16_t units[SHORT_UNITS_ROOM];
    if (in_bytes.size() > MOST_SHORT_BYTES) {
        return false;
    }
    const auto count = static_cast<std::int32_t>(in_decoder(in_bytes, units));
    if (count < 0) {
        return false;
    }
    icu::UnicodeString* const text = out_result.GetImpl();
    if (text == nullptr || !OverwriteText(*text, units, count)) {
        out_result.SetImpl(AcquireText(units, count));
    }
    return true;
}

}  // namespace Orska::Support
