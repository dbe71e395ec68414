// Compares every body of every pair that this processor can run with the reference.
#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

#include <gtest/gtest.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformAbstraction/ICU/UnicodeForms.h"
#include "tests/support/GuardedBuffer.h"

#pragma GCC diagnostic ignored "-Wconversion"  // in ICU's macros

namespace Orska::Support::Testing {

namespace {

// The reference: slow and obvious, it reads code points one by one and writes them one by one. It
// shares no code with the library; UTF-8 is read and written by ICU's macros.

// The transcoder's indexes.
enum Index { UTF8, UTF16LE, UTF16BE, UTF32LE, UTF32BE, LATIN1, CP1252 };

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

// Kinds of text, by the code points they hold: ASCII only, Latin with some accents, Cyrillic and
// Greek, Chinese and Japanese, emoji, cp1252 punctuation, and all mixed.
enum class TextKind { ASCII, LATIN, CYRGR, CJK, EMOJI, W1252, MIXED };
constexpr TextKind TEXT_KINDS[] = {TextKind::ASCII, TextKind::LATIN, TextKind::CYRGR, TextKind::CJK,
                                   TextKind::EMOJI, TextKind::W1252, TextKind::MIXED};

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

const char* GetIndexName(int in_index) {
    constexpr const char* NAMES[] = {"UTF8",    "UTF16LE", "UTF16BE", "UTF32LE",
                                     "UTF32BE", "LATIN1",  "CP1252"};
    return NAMES[in_index];
}

// Writes a valid or invalid code point; a single-byte encoding gets the low byte.
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

struct ReferenceResult {
    std::int32_t m_result = 0;
    std::size_t m_used = 0;  // bytes of the source
    std::string m_bytes;     // the output
};

// in_room: bytes of the target
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

// One body of one pair that this processor can run.
struct Kernel {
    int m_source;
    int m_target;
    std::string m_name;  // as "UTF8_UTF16LE_AVX2"
    TranscoderFunction m_function;

    friend void PrintTo(const Kernel& in_kernel, std::ostream* out) { *out << in_kernel.m_name; }
};

// The scalar body of every pair, and each different body of this processor's levels.
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

// Valid text of a kind, the same for the same seed. With a single-byte encoding: its bytes.
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

constexpr std::size_t MAX_LENGTH = 70;
constexpr std::size_t MAX_OFFSET = 15;
constexpr std::size_t BUFFER_SIZE = 8192;

std::string Hex(std::string_view in_bytes) {
    std::string text;
    for (const char byte : in_bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

class TranscoderKernelTest : public testing::TestWithParam<Kernel> {
protected:
    // Compares the kernel with the reference. The source and the target each end some bytes before
    // a forbidden page; the bytes around the target must stay, and neither position is 0. Reports
    // the first difference and returns false.
    bool Check(std::string_view in_source, std::size_t in_room, std::size_t in_offset = 0) {
        constexpr std::size_t MARGIN = 64;
        constexpr std::size_t POSITION = 3;
        char* const source = m_source.GetEnd() - in_offset - in_source.size();
        char* const target = m_target.GetEnd() - in_offset - in_room;
        std::memset(source - MARGIN, 0xF4, MARGIN);
        std::copy(in_source.begin(), in_source.end(), source);
        std::memset(m_source.GetEnd() - in_offset, 0xF4, in_offset);
        std::memset(target - MARGIN, 0x5A, m_target.GetEnd() - target + MARGIN);

        const Kernel& kernel = GetParam();
        const ReferenceResult expected =
            ReferenceTranscode(kernel.m_source, kernel.m_target, in_source, in_room);
        TranscoderSource from{source - POSITION, in_source.size() + POSITION, POSITION};
        TranscoderTarget to{target - POSITION, in_room + POSITION, POSITION};
        const std::int32_t result = kernel.m_function(from, to);
        const std::string_view written(target, to.m_position - POSITION);
        const auto isUntouched = [](char in_byte) { return in_byte == 0x5A; };
        const bool isMarginKept = std::all_of(target - MARGIN, target, isUntouched) &&
                                  std::all_of(target + in_room, m_target.GetEnd(), isUntouched);
        const bool isEqual = result == expected.m_result &&
                             from.m_position - POSITION == expected.m_used &&
                             written == expected.m_bytes;
        EXPECT_TRUE(isMarginKept) << "wrote outside the target: " << Hex(in_source);
        EXPECT_TRUE(isEqual) << "source (" << in_source.size() << ", room " << in_room
                             << "): " << Hex(in_source) << "\nresult " << result << " for "
                             << expected.m_result << ", used " << from.m_position - POSITION
                             << " for " << expected.m_used << "\nwritten  " << Hex(written)
                             << "\nexpected " << Hex(expected.m_bytes);
        return isEqual && isMarginKept;
    }

    std::size_t GetMaxRoom(std::string_view in_source) const {
        return ReferenceTranscode(GetParam().m_source, GetParam().m_target, in_source, SIZE_MAX)
            .m_bytes.size();
    }

    std::string MakeSourceText(TextKind in_kind, std::size_t in_codePoints,
                               unsigned in_seed) const {
        return MakeText(in_kind, in_codePoints, in_seed, GetParam().m_source);
    }

private:
    GuardedBuffer m_source{BUFFER_SIZE};
    GuardedBuffer m_target{4 * BUFFER_SIZE};
};

TEST_P(TranscoderKernelTest, EveryLengthAndOffset) {
    for (const TextKind kind : TEXT_KINDS) {
        for (std::size_t length = 0; length <= MAX_LENGTH; ++length) {
            const std::string text =
                MakeSourceText(kind, MAX_LENGTH, static_cast<unsigned>(length));
            const std::string_view source = std::string_view(text).substr(0, length);
            const std::size_t exact = GetMaxRoom(source);
            for (std::size_t offset = 0; offset <= MAX_OFFSET; ++offset) {
                ASSERT_TRUE(Check(source, exact + offset, offset));
                ASSERT_TRUE(Check(source, exact + 200, MAX_OFFSET - offset));
            }
            // Half a unit of zeros looks like a whole one.
            ASSERT_TRUE(Check(std::string(length, '\0'), 4 * length));
        }
    }
}

TEST_P(TranscoderKernelTest, EveryTargetSize) {
    for (const TextKind kind : TEXT_KINDS) {
        for (const std::size_t codePoints : {5, 17, 40, 70}) {
            const std::string source =
                MakeSourceText(kind, codePoints, static_cast<unsigned>(codePoints));
            const std::size_t exact = GetMaxRoom(source);
            for (std::size_t room = 0; room <= exact + 8; ++room) {
                ASSERT_TRUE(Check(source, room));
            }
        }
    }
}

// A few code units around the limits of validity, mostly wrong or cut off.
std::string MakeDoubtful(std::mt19937& io_random, int in_encoding) {
    constexpr std::string_view LEADS =
        "\x80\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xE4\xED\xEF\xF0\xF1\xF4\xF5\xF8\xFC\xFF";
    constexpr std::string_view FOLLOWERS = "\x80\x8F\x90\x9F\xA0\xBF\xC3 ";
    constexpr char32_t UNITS[] = {0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xD7FF, 0xE000, 'a'};
    constexpr char32_t VALUES[] = {0xD800,     0xDBFF,     0xDC00,     0xDFFF,
                                   0x110000,   0x10D800,   0x120000,   0x1000041,
                                   0x7FFFFFFF, 0x80000000, 0xFFFF0041, 0xFFFFFFFF};
    std::string sequence;
    for (std::size_t left = 1 + io_random() % 4; left > 0; --left) {
        if (in_encoding == UTF8) {
            const std::string_view bytes =
                sequence.empty() || io_random() % 8 == 0 ? LEADS : FOLLOWERS;
            sequence += bytes[io_random() % bytes.size()];
        } else if (in_encoding == UTF16LE || in_encoding == UTF16BE) {
            // Encode writes values below 10000 unchanged.
            sequence += EncodeCodePoint(UNITS[io_random() % std::size(UNITS)], in_encoding);
        } else {
            sequence += EncodeCodePoint(VALUES[io_random() % std::size(VALUES)], in_encoding);
        }
    }
    return sequence;
}

TEST_P(TranscoderKernelTest, MalformedAnywhere) {
    if (GetParam().m_source >= LATIN1) return;  // every byte is valid
    std::mt19937 random(GetParam().m_source);
    const int rounds = GetParam().m_source == UTF8 ? 50 : 20;
    for (const TextKind kind :
         {TextKind::ASCII, TextKind::LATIN, TextKind::CJK, TextKind::EMOJI, TextKind::MIXED}) {
        for (std::size_t before = 0; before <= MAX_LENGTH; ++before) {
            const std::string head = MakeSourceText(kind, before, 1);
            const std::string tail = MakeSourceText(kind, before % 9 == 0 ? 90 : 24, 2);
            for (int round = 0; round < rounds; ++round) {
                const std::string malformed = MakeDoubtful(random, GetParam().m_source);
                const std::size_t exact = GetMaxRoom(head + malformed);
                ASSERT_TRUE(Check(head + malformed, exact));
                ASSERT_TRUE(Check(head + malformed + tail, exact));
                ASSERT_TRUE(Check(head + malformed + tail, exact + 400));
            }
        }
    }
}

// Long texts whose kind changes now and then, in one call and cut at random places.
TEST_P(TranscoderKernelTest, LongTextInPieces) {
    std::mt19937 random(4711);
    std::string text;
    while (text.size() < BUFFER_SIZE / 2) {
        text += MakeSourceText(TEXT_KINDS[random() % 7], random() % 150,
                               static_cast<unsigned>(random()));
    }
    ASSERT_TRUE(Check(text, GetMaxRoom(text)));
    ASSERT_TRUE(Check(text, GetMaxRoom(text) + 100));
    for (int round = 0; round < 400; ++round) {
        const std::string_view piece =
            std::string_view(text).substr(random() % text.size(), random() % 600);
        const std::size_t exact = GetMaxRoom(piece);
        ASSERT_TRUE(Check(piece, exact));
        ASSERT_TRUE(Check(piece, exact == 0 ? 0 : random() % exact));
        ASSERT_TRUE(Check(piece, exact + random() % 100));
    }
}

// Every pair of neighbouring code units and every pair of byte values at a block's edges.
TEST_P(TranscoderKernelTest, RandomBytes) {
    std::mt19937 random(815);
    for (int round = 0; round < 3000; ++round) {
        std::string source = MakeSourceText(TEXT_KINDS[random() % 7], 40, round);
        const std::size_t changes = 1 + random() % 3;
        for (std::size_t i = 0; i < changes; ++i) {
            source[random() % source.size()] = static_cast<char>(random());
        }
        ASSERT_TRUE(Check(source, GetMaxRoom(source) + random() % 80));
    }
}

TEST_P(TranscoderKernelTest, NullBuffersOfLengthZero) {
    TranscoderSource source{nullptr, 0, 0};
    TranscoderTarget target{nullptr, 0, 0};
    EXPECT_EQ(GetParam().m_function(source, target), TRANSCODER_DONE);
    const std::string one = EncodeCodePoint('a', GetParam().m_source);
    source = {one.data(), one.size(), 0};
    EXPECT_EQ(GetParam().m_function(source, target), TRANSCODER_FULL);
    EXPECT_EQ(source.m_position, 0U);
}

INSTANTIATE_TEST_SUITE_P(All, TranscoderKernelTest, testing::ValuesIn(GetKernels()),
                         [](const auto& in_info) { return in_info.param.m_name; });

// What strings use for UTF-16 in memory has the same contract. A further test runs them on SSE2.
std::vector<Kernel> GetUtf16Forms() {
    std::vector<Kernel> forms;
    for (const int form : {UTF16LE, UTF16BE, UTF32LE, UTF32BE}) {
        const std::string name = GetIndexName(form);
        forms.push_back({UTF16LE, form, "To" + name, GetUtf16Encoder(EncodingType{form})});
        forms.push_back({form, UTF16LE, "From" + name, GetUtf16Decoder(EncodingType{form})});
    }
    return forms;
}

INSTANTIATE_TEST_SUITE_P(InMemory, TranscoderKernelTest, testing::ValuesIn(GetUtf16Forms()),
                         [](const auto& in_info) { return in_info.param.m_name; });

// Not a failure, but the report shows that some kernels were not tested.
TEST(TranscoderTest, ProcessorHasEveryLevel) {
    if (DetectCpuLevel() < CpuLevel::AVX512) {
        GTEST_SKIP() << "this processor lacks AVX-512 with VBMI2 (its level is "
                     << static_cast<int>(DetectCpuLevel())
                     << "): kernels above its level were not run; see docs/encodings.md";
    }
}

TEST(TranscoderTest, PairsThatHaveAFunction) {
    const std::set<std::pair<int, int>> pairs = {
        {UTF8, UTF16LE},   {UTF8, UTF16BE},   {UTF8, UTF32LE},   {UTF8, UTF32BE},
        {UTF8, LATIN1},    {UTF8, CP1252},    {UTF16LE, UTF8},   {UTF16LE, LATIN1},
        {UTF16LE, CP1252}, {UTF16BE, UTF8},   {UTF16BE, LATIN1}, {UTF16BE, CP1252},
        {UTF32LE, UTF8},   {UTF32BE, UTF8},   {LATIN1, UTF8},    {LATIN1, UTF16LE},
        {LATIN1, UTF16BE}, {LATIN1, UTF32LE}, {LATIN1, UTF32BE}, {LATIN1, CP1252},
        {CP1252, UTF8},    {CP1252, UTF16LE}, {CP1252, UTF16BE}, {CP1252, LATIN1}};
    for (int source = -1; source <= TRANSCODER_NO_INDEX; ++source) {
        for (int target = -1; target <= TRANSCODER_NO_INDEX; ++target) {
            SCOPED_TRACE(std::to_string(source) + " to " + std::to_string(target));
            const bool hasFunction = pairs.count({source, target}) == 1;
            EXPECT_EQ(GetTranscoder(source, target) != nullptr, hasFunction);
            EXPECT_EQ(GetScalarTranscoder(source, target) != nullptr, hasFunction);
            EXPECT_EQ(GetTranscoderAtLevel(source, target, CpuLevel::SSE2) != nullptr, hasFunction);
        }
    }
}

TEST(TranscoderTest, IndexesOfEncodings) {
    for (std::int32_t value = -1; value < ENCODING_COUNT; ++value) {
        const int expected = value == 96 ? 6 : (value >= 0 && value < 7 ? value : 7);
        EXPECT_EQ(GetTranscoderIndex(static_cast<EncodingType>(value)), expected) << value;
    }
}

// The most bytes that one code point takes for the bytes it had; single-byte sources as UTF-8.
TEST(TranscoderTest, WorstCase) {
    for (int source = UTF8; source <= CP1252; ++source) {
        for (int target = UTF8; target <= CP1252; ++target) {
            SCOPED_TRACE(std::to_string(source) + " to " + std::to_string(target));
            std::size_t ratio = 0;  // for four bytes
            for (const char32_t codePoint : {U'a', U'\u07FF', U'\uFFFF', U'\U0010FFFF'}) {
                const int from = source < LATIN1 ? source : static_cast<int>(UTF8);
                ratio = std::max(ratio, 4 * EncodeCodePoint(codePoint, target).size() /
                                            EncodeCodePoint(codePoint, from).size());
            }
            EXPECT_EQ(GetTranscoderWorstCase(source, target, 12), 3 * ratio);
            EXPECT_EQ(GetTranscoderWorstCase(source, target, 3), 3 * ratio / 4) << "rounded down";
        }
    }
    EXPECT_EQ(GetTranscoderWorstCase(UTF8, UTF8, INT64_MAX), INT64_MAX);
    EXPECT_EQ(GetTranscoderWorstCase(UTF8, UTF32LE, (std::uint64_t{1} << 61) - 1), INT64_MAX - 3);
    for (const std::uint64_t length : {std::uint64_t{1} << 61, UINT64_MAX}) {
        EXPECT_EQ(GetTranscoderWorstCase(UTF8, UTF32LE, length), INT64_MAX);
    }
    EXPECT_EQ(GetTranscoderWorstCase(UTF8, 7, 10), -1);
    EXPECT_EQ(GetTranscoderWorstCase(7, UTF8, 10), -1);
}

}  // namespace

}  // namespace Orska::Support::Testing
