// Compares every body of every pair that this processor can run with the reference.
#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <set>

#include "PlatformAbstraction/ICU/UnicodeForms.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/TranscoderReference.h"

namespace Orska::Support::Testing {

namespace {

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
