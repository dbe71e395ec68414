#include "tests/support/TranscoderReference.h"

#include <unicode/utf8.h>

#include <random>

#pragma GCC diagnostic ignored "-Wconversion"  // in ICU's macros

namespace Orska::Support::Testing {

namespace {

using Byte = unsigned char;

constexpr char32_t CP1252_CODE_POINTS[32] = {
    U'\u20AC', U'\u0081', U'\u201A', U'\u0192', U'\u201E', U'\u2026', U'\u2020', U'\u2021',
    U'\u02C6', U'\u2030', U'\u0160', U'\u2039', U'\u0152', U'\u008D', U'\u017D', U'\u008F',
    U'\u0090', U'\u2018', U'\u2019', U'\u201C', U'\u201D', U'\u2022', U'\u2013', U'\u2014',
    U'\u02DC', U'\u2122', U'\u0161', U'\u203A', U'\u0153', U'\u009D', U'\u017E', U'\u0178'};

struct OnePoint {
    std::int32_t m_result;  // 0 or the transcoder's error
    std::size_t m_size;
    char32_t m_codePoint;
};

OnePoint ReadUtf8(std::string_view in_bytes) {
    UChar32 codePoint = 0;
    std::size_t used = 0;
    U8_NEXT(in_bytes, used, in_bytes.size(), codePoint);
    if (codePoint >= 0) return {0, used, static_cast<char32_t>(codePoint)};
    // Of malformed bytes the longest beginning of a code point was used.
    const auto trails = static_cast<std::size_t>(U8_COUNT_TRAIL_BYTES(in_bytes[0]));
    const bool isCutOff = used == in_bytes.size() && used <= trails;
    return {isCutOff ? TRANSCODER_INCOMPLETE : TRANSCODER_INVALID, 0, 0};
}

char32_t ReadNumber(std::string_view in_bytes, bool in_isBigEndian) {
    char32_t value = 0;
    for (std::size_t i = 0; i < in_bytes.size(); ++i) {
        const std::size_t at = in_isBigEndian ? i : in_bytes.size() - 1 - i;
        value = value * 256 + static_cast<Byte>(in_bytes[at]);
    }
    return value;
}

OnePoint ReadUtf16(std::string_view in_bytes, bool in_isBigEndian) {
    if (in_bytes.size() < 2) return {TRANSCODER_INCOMPLETE, 0, 0};
    const char32_t first = ReadNumber(in_bytes.substr(0, 2), in_isBigEndian);
    if (first >= 0xDC00 && first <= 0xDFFF) return {TRANSCODER_INVALID, 0, 0};
    if (first < 0xD800 || first > 0xDBFF) return {0, 2, first};
    if (in_bytes.size() < 4) return {TRANSCODER_INCOMPLETE, 0, 0};
    const char32_t second = ReadNumber(in_bytes.substr(2, 2), in_isBigEndian);
    if (second < 0xDC00 || second > 0xDFFF) return {TRANSCODER_INVALID, 0, 0};
    return {0, 4, 0x10000 + (first - 0xD800) * 0x400 + (second - 0xDC00)};
}

OnePoint ReadUtf32(std::string_view in_bytes, bool in_isBigEndian) {
    if (in_bytes.size() < 4) return {TRANSCODER_INCOMPLETE, 0, 0};
    const char32_t value = ReadNumber(in_bytes.substr(0, 4), in_isBigEndian);
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value > 0x10FFFF || isSurrogate) return {TRANSCODER_INVALID, 0, 0};
    return {0, 4, value};
}

OnePoint ReadOne(std::string_view in_bytes, int in_encoding) {
    const auto byte = static_cast<Byte>(in_bytes[0]);
    switch (in_encoding) {
        case UTF8:
            return ReadUtf8(in_bytes);
        case UTF16LE:
            return ReadUtf16(in_bytes, false);
        case UTF16BE:
            return ReadUtf16(in_bytes, true);
        case UTF32LE:
            return ReadUtf32(in_bytes, false);
        case UTF32BE:
            return ReadUtf32(in_bytes, true);
        case CP1252:
            if (byte >= 0x80 && byte <= 0x9F) return {0, 1, CP1252_CODE_POINTS[byte - 0x80]};
            return {0, 1, byte};
        default:
            return {0, 1, byte};
    }
}

std::string WriteNumber(char32_t in_value, std::size_t in_size, bool in_isBigEndian) {
    std::string bytes;
    for (std::size_t i = 0; i < in_size; ++i) {
        const char byte = static_cast<char>((in_value >> (8 * i)) & 0xFF);
        bytes.insert(in_isBigEndian ? bytes.begin() : bytes.end(), byte);
    }
    return bytes;
}

char32_t PickCodePoint(TextKind in_kind, std::mt19937& io_random) {
    const auto below = [&io_random](unsigned in_limit) {
        return static_cast<char32_t>(io_random() % in_limit);
    };
    const char32_t ascii = below(8) == 0 ? U' ' : U'a' + below(26);
    switch (in_kind) {
        case TextKind::ASCII:
            return below(40) == 0 ? below(0x80) : ascii;
        case TextKind::LATIN:
            return below(8) == 0 ? 0x80 + below(0x80) : ascii;
        case TextKind::CYRGR:
            return below(7) == 0 ? U' ' : 0x370 + below(0x1C0);
        case TextKind::CJK: {
            constexpr char32_t EDGES[] = {0x800, 0xFFF, 0x1000, 0xD7FF, 0xE000, 0xFFFF, 0xFEFF};
            if (below(30) == 0) return EDGES[below(7)];
            return below(20) == 0 ? 0x3001 + below(2) : 0x4E00 + below(0x5000);
        }
        case TextKind::EMOJI: {
            constexpr char32_t EDGES[] = {0x10000, 0x3FFFF, 0x40000, 0xFFFFF, 0x100000, 0x10FFFF};
            return below(30) == 0 ? EDGES[below(6)] : 0x1F300 + below(0x300);
        }
        case TextKind::W1252:
            return below(3) == 0 ? CP1252_CODE_POINTS[below(32)] : ascii;
        case TextKind::MIXED:
            break;
    }
    return PickCodePoint(TEXT_KINDS[below(6)], io_random);
}

}  // namespace

const char* GetIndexName(int in_index) {
    constexpr const char* NAMES[] = {"UTF8",    "UTF16LE", "UTF16BE", "UTF32LE",
                                     "UTF32BE", "LATIN1",  "CP1252"};
    return NAMES[in_index];
}

std::string EncodeCodePoint(char32_t in_codePoint, int in_encoding) {
    switch (in_encoding) {
        case UTF8: {
            char bytes[4];
            std::size_t size = 0;
            U8_APPEND_UNSAFE(bytes, size, in_codePoint);
            return {bytes, size};
        }
        case UTF16LE:
        case UTF16BE: {
            const bool isBig = in_encoding == UTF16BE;
            if (in_codePoint < 0x10000) return WriteNumber(in_codePoint, 2, isBig);
            const char32_t rest = in_codePoint - 0x10000;
            return WriteNumber(0xD800 + rest / 0x400, 2, isBig) +
                   WriteNumber(0xDC00 + rest % 0x400, 2, isBig);
        }
        case UTF32LE:
        case UTF32BE:
            return WriteNumber(in_codePoint, 4, in_encoding == UTF32BE);
        default:
            return {static_cast<char>(in_codePoint)};
    }
}

std::string Encode(const std::u32string& in_text, int in_encoding) {
    std::string bytes;
    for (const char32_t codePoint : in_text) {
        bytes += EncodeCodePoint(codePoint, in_encoding);
    }
    return bytes;
}

ReferenceResult ReferenceTranscode(int in_source, int in_target, std::string_view in_bytes,
                                   std::size_t in_room) {
    ReferenceResult result;
    while (result.m_used < in_bytes.size()) {
        const OnePoint next = ReadOne(in_bytes.substr(result.m_used), in_source);
        if (next.m_result != 0) {
            result.m_result = next.m_result;
            return result;
        }
        const bool isSingleByte = in_target == LATIN1 || in_target == CP1252;
        const bool isTooLarge = isSingleByte && next.m_codePoint > 0xFF;
        const std::string bytes =
            EncodeCodePoint(isTooLarge ? char32_t{0x1A} : next.m_codePoint, in_target);
        if (result.m_bytes.size() + bytes.size() > in_room) {
            result.m_result = TRANSCODER_FULL;
            return result;
        }
        result.m_bytes += bytes;
        result.m_used += next.m_size;
    }
    return result;
}

std::vector<Kernel> GetKernels() {
    constexpr const char* LEVELS[] = {"SSE2", "SSE3", "SSSE3", "SSE41", "SSE42", "AVX2", "AVX512"};
    std::vector<Kernel> kernels;
    for (int source = UTF8; source <= CP1252; ++source) {
        for (int target = UTF8; target <= CP1252; ++target) {
            TranscoderFunction last = GetScalarTranscoder(source, target);
            if (last == nullptr) continue;
            const std::string pair =
                std::string(GetIndexName(source)) + "_" + GetIndexName(target) + "_";
            kernels.push_back({source, target, pair + "Scalar", last});
            for (int level = 0; level <= static_cast<int>(DetectCpuLevel()); ++level) {
                const TranscoderFunction function =
                    GetTranscoderAtLevel(source, target, static_cast<CpuLevel>(level));
                if (function == last) continue;
                kernels.push_back({source, target, pair + LEVELS[level], function});
                last = function;
            }
        }
    }
    return kernels;
}

std::string MakeText(TextKind in_kind, std::size_t in_codePoints, unsigned in_seed,
                     int in_encoding) {
    std::mt19937 random(in_seed);
    std::u32string text;
    for (std::size_t i = 0; i < in_codePoints; ++i) {
        text += PickCodePoint(in_kind, random);
    }
    if (in_encoding != CP1252) return Encode(text, in_encoding);
    // cp1252 punctuation as its own bytes, which the transcoder never writes.
    for (char32_t& codePoint : text) {
        for (char32_t i = 0; i < 32; ++i) {
            if (codePoint == CP1252_CODE_POINTS[i]) codePoint = 0x80 + i;
        }
    }
    return Encode(text, in_encoding);
}

}  // namespace Orska::Support::Testing
