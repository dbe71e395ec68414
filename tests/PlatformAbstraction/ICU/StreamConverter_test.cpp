// The three kinds of stream converter and the factory that picks one.
#include <gtest/gtest.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/SiconvStreamConverter.h"
#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "PlatformAbstraction/ICU/WideStreamBlitter.h"
#include "PlatformAbstraction/ICU/WideStreamConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "tests/support/IcuText.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support::Testing {
namespace {

using Test::ThrownMessage;

using Converter = std::unique_ptr<StreamConverter>;

EncodingType Enc(int in_value) { return static_cast<EncodingType>(in_value); }

Converter Make(int in_source, int in_target) {
    return StreamConverterFactory::CreateConverter(Enc(in_source), Enc(in_target), 3);
}

enum class Kind { BLITTER, SICONV, WIDE };

Kind KindOf(const StreamConverter& in_converter) {
    if (dynamic_cast<const WideStreamBlitter*>(&in_converter) != nullptr) return Kind::BLITTER;
    if (dynamic_cast<const SiconvStreamConverter*>(&in_converter) != nullptr) return Kind::SICONV;
    return Kind::WIDE;
}

// Returns the size of the next piece or target, in bytes.
using NextSize = std::function<std::uint64_t()>;

constexpr std::uint64_t GUARD = 8;
constexpr char GUARD_BYTE = '\x5A';
constexpr int MOST_IDLE_TARGETS = 1000;

// Converts once into a new target and appends the output.
void ConvertTarget(StreamConverter& io_converter, std::uint64_t in_size, bool in_isWithNul,
                   std::string& out_text) {
    std::vector<char> target(in_size + GUARD, GUARD_BYTE);
    const std::uint64_t totalBefore = io_converter.GetTotalBytesWritten();
    io_converter.SetTarget(target.data(), in_size);
    if (in_isWithNul) {
        io_converter.DoConvertWithNul();
    } else {
        io_converter.DoConvert();
    }
    const std::uint64_t written = io_converter.GetTargetPosition();
    const std::uint64_t nulWidth = in_isWithNul ? io_converter.GetTargetCodeUnitWidth() : 0;
    ASSERT_EQ(totalBefore + written, io_converter.GetTotalBytesWritten());
    // Without room for the NUL nothing is written.
    const std::uint64_t used = nulWidth <= in_size ? written + nulWidth : written;
    ASSERT_LE(used, nulWidth <= in_size ? in_size : 0);
    for (std::uint64_t i = written; i < used; ++i) ASSERT_EQ('\0', target[i]);
    // A code point that was cut by the NUL can have left bytes.
    const std::uint64_t touched = used == 0 ? 0 : in_size;
    ASSERT_EQ(target.size() - touched, static_cast<std::uint64_t>(std::count(
                                           target.begin() + static_cast<std::ptrdiff_t>(touched),
                                           target.end(), GUARD_BYTE)));
    ASSERT_TRUE(io_converter.IsTargetFilled() || !io_converter.HasDataRemaining());
    ASSERT_TRUE(in_isWithNul || io_converter.IsTargetFilled() == (written == in_size));
    out_text.append(target.data(), written);
}

// Converts a whole text and joins the targets. Fails the test when a converter writes past a
// target, misses a NUL, miscounts, or makes no progress for many targets in a row.
std::string ConvertInPieces(StreamConverter& io_converter, std::string_view in_source,
                            const NextSize& in_pieceSize, const NextSize& in_targetSize,
                            bool in_isWithNul = false) {
    std::string text;
    bool isLast = false;
    while (!isLast) {
        const std::size_t size = std::min<std::size_t>(in_pieceSize(), in_source.size());
        isLast = size == in_source.size();
        // A separate copy, so that a converter cannot be right by chance with what it keeps of it.
        const std::vector<char> piece(in_source.begin(),
                                      in_source.begin() + static_cast<std::ptrdiff_t>(size));
        in_source.remove_prefix(size);
        io_converter.SetSource(piece.data(), size, isLast);
        int idle = 0;
        do {
            const std::size_t before = text.size();
            ConvertTarget(io_converter, in_targetSize(), in_isWithNul, text);
            idle = text.size() == before ? idle + 1 : 0;
            if (testing::Test::HasFatalFailure() || idle > MOST_IDLE_TARGETS) {
                ADD_FAILURE() << "no progress, or the failure above";
                return text;
            }
        } while (io_converter.HasDataRemaining());
        EXPECT_TRUE(io_converter.IsSourceConsumed());
        EXPECT_EQ(size, io_converter.GetSourcePosition());
    }
    return text;
}

// Converts a whole text as one last piece into one target that is large enough.
std::string ConvertAtOnce(StreamConverter& io_converter, std::string_view in_source) {
    const std::uint64_t enough = in_source.size() * 8 + 64;
    return ConvertInPieces(
        io_converter, in_source, [&] { return in_source.size(); }, [&] { return enough; });
}

TEST(StreamConverterFactory, PicksTheKindByThePair) {
    const struct {
        const char* m_point;
        int m_source, m_target;
        Kind m_kind;
    } cases[] = {
        {"same encoding", 18, 18, Kind::BLITTER},
        {"US-ASCII into a superset", 7, 0, Kind::BLITTER},
        {"US-ASCII into a set that is marked as none", 7, 84, Kind::WIDE},
        {"US-ASCII into EBCDIC", 7, 41, Kind::WIDE},
        {"US-ASCII into UTF-16", 7, 1, Kind::WIDE},
        {"a superset into US-ASCII", 0, 7, Kind::WIDE},
        {"a pair of the transcoder", 0, 1, Kind::SICONV},
        {"ibm-5348 counts as cp1252", 96, 0, Kind::SICONV},
        {"into ibm-5348", 0, 96, Kind::SICONV},
        {"cp1252 and ibm-5348 have no function", 6, 96, Kind::WIDE},
        {"known to the transcoder, but no function", 1, 2, Kind::WIDE},
        {"UTF-32 into UTF-16", 3, 1, Kind::WIDE},
        {"one side unknown to the transcoder", 0, 18, Kind::WIDE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        const Converter converter = Make(c.m_source, c.m_target);
        EXPECT_EQ(c.m_kind, KindOf(*converter));
        EXPECT_EQ(3, converter->GetFlag());
        EXPECT_TRUE(converter->IsSourceConsumed());
    }
    EXPECT_EQ("EncodingNotRecog", ThrownMessage([] { Make(0, 119); }));
    EXPECT_EQ("EncodingNotRecog", ThrownMessage([] { Make(-1, 0); }));
}

TEST(WideStreamBlitter, SetsItsFlagsByWhatFits) {
    const struct {
        const char* m_point;
        std::uint64_t m_space, m_wanted;
        std::string m_written;
        bool m_isConsumed, m_isFilled, m_isRemaining;
    } cases[] = {
        {"more room than source", 8, 6, "abcde", true, false, false},
        {"exact room", 5, 5, "abcde", true, true, false},
        {"less wanted than available", 8, 3, "abc", false, true, true},
        {"more wanted than the target has", 2, 100, "ab", false, true, true},
        {"no room", 0, 0, "", false, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        const Converter converter = Make(0, 0);
        std::vector<char> target(c.m_space);
        converter->SetSource("abcde", 5);
        converter->SetTarget(target.data(), target.size());
        converter->DoConvert(c.m_wanted);
        EXPECT_EQ(c.m_written, std::string(target.data(), converter->GetTargetPosition()));
        EXPECT_EQ(c.m_written.size(), converter->GetSourcePosition());
        EXPECT_EQ(c.m_isConsumed, converter->IsSourceConsumed());
        EXPECT_EQ(c.m_isFilled, converter->IsTargetFilled());
        EXPECT_EQ(c.m_isRemaining, converter->HasDataRemaining());
    }
}

TEST(StreamConverter, RefusesPositionsOutsideTheBuffers) {
    for (const auto& [source, target] : {std::pair{0, 0}, {0, 1}, {1, 3}}) {
        SCOPED_TRACE(source);
        const Converter converter = Make(source, target);
        char room[8];
        converter->SetSource("abcd", 4);
        converter->SetTarget(room, 4);
        converter->SetTargetPosition(5);
        EXPECT_EQ("InvalidBuffPos", ThrownMessage([&] { converter->DoConvert(); }));
        EXPECT_EQ("InvalidBuffPos", ThrownMessage([&] { converter->DoConvertWithNul(); }));
        converter->SetTargetPosition(4);
        for (const std::uint64_t position : {std::uint64_t{5}, ~std::uint64_t{0}}) {
            converter->SetSourcePosition(position);
            EXPECT_EQ(position, converter->GetSourcePosition());
            EXPECT_EQ("InvalidBuffPos", ThrownMessage([&] { converter->DoConvert(); }));
        }
        converter->SetTargetPosition(0);
        converter->SetSourcePosition(2);
        EXPECT_EQ("nothing", ThrownMessage([&] { converter->DoConvert(); }));
    }
}

TEST(SiconvStreamConverter, ConvertsTheTextBeforeMalformedInput) {
    const struct {
        const char* m_point;
        int m_source, m_target;
        std::vector<std::string> m_pieces;  // the last one is the end of the text
        std::string m_before;
    } cases[] = {
        {"lone trail surrogate", 1, 0, {std::string("a\0\x00\xDC", 4)}, "a"},
        {"lead surrogate and a letter",
         1,
         0,
         {std::string("\x3D\xD8", 2), std::string("a\0", 2)},
         ""},
        {"tail completed wrongly", 0, 5, {"a\xE2", "\x82", "b"}, "a"},
        {"incomplete at the end", 0, 5, {"ab\xE2\x82"}, "ab"},
        {"incomplete, the end comes later", 0, 5, {"ab\xE2", "\x82", ""}, "ab"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        const Converter converter = Make(c.m_source, c.m_target);
        std::string target(64, 'x');
        converter->SetTarget(target.data(), target.size());
        EXPECT_EQ("ICUConvErrNotRecog", ThrownMessage([&] {
                      for (std::size_t i = 0; i < c.m_pieces.size(); ++i) {
                          converter->SetSource(c.m_pieces[i].data(), c.m_pieces[i].size(),
                                               i + 1 == c.m_pieces.size());
                          converter->DoConvert();
                      }
                  }));
        EXPECT_EQ(c.m_before, target.substr(0, converter->GetTargetPosition()));
        EXPECT_EQ(c.m_before.size(), converter->GetTotalBytesWritten());

        converter->Reset();
        EXPECT_EQ(0U, converter->GetTotalBytesWritten());
        const std::string plain = EncodeWithIcu(u"next", Enc(c.m_source));
        EXPECT_EQ(EncodeWithIcu(u"next", Enc(c.m_target)), ConvertAtOnce(*converter, plain));
    }
}

TEST(SiconvStreamConverter, WritesACutCodePointBeforeItRefusesTheNext) {
    const Converter converter = Make(0, 1);
    converter->SetSource("\xE2\x82\xAC\xFF", 4, true);
    char target[1];
    converter->SetTarget(target, 1);
    converter->DoConvert();
    EXPECT_EQ('\xAC', target[0]);
    EXPECT_TRUE(converter->HasDataRemaining());
    converter->SetTarget(target, 1);
    EXPECT_EQ("ICUConvErrNotRecog", ThrownMessage([&] { converter->DoConvert(); }));
    EXPECT_EQ('\x20', target[0]);
    EXPECT_EQ(2U, converter->GetTotalBytesWritten());

    converter->Reset();
    converter->SetSource("\xE2\x82\xAC", 3);
    converter->SetTarget(target, 1);
    converter->DoConvert();
    converter->Reset();  // drops the second byte
    EXPECT_EQ(std::string("a\0", 2), ConvertAtOnce(*converter, "a"));
}

TEST(WideStreamConverter, HoldsACutCodePointBeforeTheNul) {
    const struct {
        const char* m_point;
        std::size_t m_space;
        bool m_isWithNul;
        std::string m_after;
        std::uint64_t m_total;
        bool m_isRemaining;
    } steps[] = {
        {"the lead byte was written and taken back", 3, true, std::string("a\0x", 3), 1, true},
        {"room for the lead byte only", 2, true, std::string("\0x", 2), 1, true},
        {"room for less than is held", 1, true, std::string(1, '\0'), 1, true},
        {"by the byte without a NUL", 1, false, "\x8A", 2, true},
        {"room for the rest", 3, true, std::string("\xBF\x62\0", 3), 4, false},
    };
    const Converter converter = Make(1, 18);  // UTF-16LE to SJIS
    const std::u16string text = u"a\u6F22b";
    converter->SetSource(reinterpret_cast<const char*>(text.data()), 6, true);
    for (const auto& step : steps) {
        SCOPED_TRACE(step.m_point);
        std::string target(step.m_space, 'x');
        converter->SetTarget(target.data(), target.size());
        step.m_isWithNul ? converter->DoConvertWithNul() : converter->DoConvert();
        EXPECT_EQ(step.m_after, target);
        EXPECT_EQ(step.m_total, converter->GetTotalBytesWritten());
        EXPECT_TRUE(converter->IsTargetFilled());
        EXPECT_EQ(step.m_isRemaining, converter->HasDataRemaining());
    }
}

// Converts through ICU: to UTF-16 and on, with malformed bytes replaced.
std::string ConvertWithIcu(const std::string& in_source, EncodingType in_from, EncodingType in_to) {
    const icu::UnicodeString text(in_source.data(), static_cast<std::int32_t>(in_source.size()),
                                  EncodingInfo::GetName(in_from));
    return EncodeWithIcu({text.getBuffer(), static_cast<std::size_t>(text.length())}, in_to);
}

// Checks that cut conversions of a source write the same bytes as one at once, and that these are
// ICU's if the pair's converter is a WideStreamConverter. One round goes byte by byte, the others
// use random sizes, every second one with NULs.
void CheckCuts(EncodingType in_from, EncodingType in_to, const std::string& in_source,
               std::uint32_t in_seed, int in_rounds) {
    SCOPED_TRACE(std::string(EncodingInfo::GetName(in_from)) + " to " +
                 EncodingInfo::GetName(in_to) + ", seed " + std::to_string(in_seed));
    const auto converter = StreamConverterFactory::CreateConverter(in_from, in_to);
    const std::string whole = ConvertAtOnce(*converter, in_source);
    if (dynamic_cast<WideStreamConverter*>(converter.get()) != nullptr) {
        ASSERT_EQ(ConvertWithIcu(in_source, in_from, in_to), whole);
    }
    const auto one = [] { return 1U; };
    ASSERT_EQ(whole, ConvertInPieces(*converter, in_source, one, one));
    Random random(in_seed);
    for (int round = 0; round < in_rounds; ++round) {
        const std::uint32_t mostPiece = 1 + random.Below(40);
        const std::uint32_t mostTarget = 1 + random.Below(40);
        const bool isWithNul = round % 2 == 1;
        // With a NUL, progress needs room for the longest code point and the NUL, now and then.
        const auto leastTarget = [&] { return isWithNul && random.Below(3) != 0 ? 8 : 0; };
        ASSERT_EQ(whole,
                  ConvertInPieces(
                      *converter, in_source, [&] { return random.Below(mostPiece + 1); },
                      [&] { return leastTarget() + random.Below(mostTarget + 1); }, isWithNul))
            << "round " << round;
        if (testing::Test::HasFailure()) return;
    }
}

TEST(StreamPieces, EveryPairOnValidText) {
    for (int from = 0; from < ENCODING_COUNT; ++from) {
        const std::string source = EncodeWithIcu(GetMixedText(), Enc(from));
        for (int to = 0; to < ENCODING_COUNT; ++to) {
            CheckCuts(Enc(from), Enc(to), source, static_cast<std::uint32_t>(from * 119 + to), 2);
            if (testing::Test::HasFailure()) return;
        }
    }
}

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
