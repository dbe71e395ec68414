// The bytes do not depend on how the source and the targets are cut.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "tests/support/StreamDriver.h"

namespace Orska::Support::Testing {
namespace {

EncodingType Enc(int in_value) { return static_cast<EncodingType>(in_value); }

// One or more of each family: UTF, the transcoder's, ISO-2022 and HZ, EUC, SJIS, GB, Big5, EBCDIC,
// code pages with combining or bidirectional letters.
const std::vector<int> SAMPLE = {0,  1,  2,  3,  4,  5,  6,  7,  17, 18, 19, 20,  22,  24,  25, 26,
                                 27, 28, 32, 39, 41, 48, 50, 67, 82, 89, 96, 111, 112, 116, 118};

TEST(StreamPieces, SampledPairsOnValidText) { CheckPairs(SAMPLE, SAMPLE, 4); }

TEST(StreamPieces, WideConvertersOnMalformedText) {
    Random random(7);
    for (const int from : {0, 1, 3, 17, 18, 19, 22, 24, 25, 27, 28, 32, 39, 41, 67, 111, 116}) {
        for (int round = 0; round < 20; ++round) {
            std::string source = EncodeWithIcu(GetMixedText(), Enc(from));
            for (int i = 0; i < 8; ++i) {
                source[random.Below(static_cast<std::uint32_t>(source.size()))] =
                    static_cast<char>(random.Below(4) == 0 ? 0x1B : random.Below(256));
            }
            source.resize(random.Below(static_cast<std::uint32_t>(source.size())) + 1);
            for (const int to : {0, 1, 3, 19, 24, 28, 111}) {
                // The other converters refuse malformed text, or copy it.
                const bool isWide = to != from && (from > 4 || to > 4);
                if (!isWide) continue;
                CheckCuts(Enc(from), Enc(to), source, static_cast<std::uint32_t>(round), 2);
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

TEST(StreamPieces, TextLongerThanTheIntermediateBuffer) {
    std::u16string text;
    while (text.size() < 30000) text += GetMixedText();
    for (const auto& [from, to] : {std::pair{0, 24}, {18, 1}, {1, 3}, {24, 0}, {27, 22}, {0, 1}}) {
        SCOPED_TRACE(from);
        const std::string source = EncodeWithIcu(text, Enc(from));
        const auto converter = StreamConverterFactory::CreateConverter(Enc(from), Enc(to));
        const std::string whole = ConvertAtOnce(*converter, source);
        EXPECT_EQ(ConvertWithIcu(source, Enc(from), Enc(to)), whole);
        for (const std::uint64_t piece : {61U, 4093U, 1000000U}) {
            for (const bool isWithNul : {false, true}) {
                EXPECT_TRUE(whole == ConvertInPieces(
                                         *converter, source, [&] { return piece; },
                                         [] { return 1000U; }, isWithNul));
            }
        }
    }
}

}  // namespace
}  // namespace Orska::Support::Testing
