#include "tests/support/StreamDriver.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <vector>

#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "PlatformAbstraction/ICU/WideStreamConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support::Testing {

namespace {

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
    if (nulWidth <= in_size) {
        ASSERT_LE(written + nulWidth, in_size);
        for (std::uint64_t i = 0; i < nulWidth; ++i) {
            ASSERT_EQ('\0', target[written + i]);
        }
    }
    ASSERT_EQ(GUARD, static_cast<std::uint64_t>(
                         std::count(target.begin() + static_cast<std::ptrdiff_t>(in_size),
                                    target.end(), GUARD_BYTE)));
    out_text.append(target.data(), written);
}

// True when a text in HZ ends in its two-byte state.
bool IsOpenHz(std::string_view in_bytes) {
    bool isOpen = false;
    for (std::size_t i = 0; i + 1 < in_bytes.size();) {
        if (in_bytes[i] == '~') {
            isOpen = in_bytes[i + 1] == '{' || (isOpen && in_bytes[i + 1] != '}');
            i += 2;
        } else {
            i += isOpen ? 2 : 1;
        }
    }
    return isOpen;
}

}  // namespace

std::string ConvertInPieces(StreamConverter& io_converter, std::string_view in_source,
                            const NextSize& in_pieceSize, const NextSize& in_targetSize,
                            bool in_isWithNul) {
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

std::string ConvertAtOnce(StreamConverter& io_converter, std::string_view in_source) {
    const std::uint64_t enough = in_source.size() * 8 + 64;
    return ConvertInPieces(
        io_converter, in_source, [&] { return in_source.size(); }, [&] { return enough; });
}

std::string EncodeWithIcu(std::u16string_view in_text, EncodingType in_encoding) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUConverterPointer converter(
        ucnv_open(EncodingInfo::GetName(in_encoding), &status));
    const auto length = static_cast<std::int32_t>(in_text.size());
    std::string bytes(in_text.size() * 8 + 64, '\0');
    const std::int32_t written =
        ucnv_fromUChars(converter.getAlias(), bytes.data(), static_cast<std::int32_t>(bytes.size()),
                        in_text.data(), length, &status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    bytes.resize(static_cast<std::size_t>(written));
    // ICU does not end HZ in its initial state.
    return in_encoding == EncodingType{67} && IsOpenHz(bytes) ? bytes + "~}" : bytes;
}

std::u16string GetMixedText() {
    return u"Plain ASCII, long enough for whole blocks of it; "
           u"caf\u00E9 \u00DC\u00DF\u0178\u20AC \u201Cq\u201D "
           u"\u0416\u0443\u0440 \u0391\u03B8\u03AE\u03BD\u03B1 \u05E9\u05DC\u05D5 "
           u"\u0645\u0631\u062D "
           u"\u0E2A\u0E27\u0E31 "
           u"\u65E5\u672C\u8A9E\u6F22\u5B57 \u30AB\u30BF\u30AB\u30CA \uFF76\uFF85 \u3002\u4E02 "
           u"\u7E41\u9AD4\u7B80\u4F53 \uD55C\uAD6D\uC5B4 a\u4E2Db\uAC00c\u3042~{~}\\\n"
           u"\U0001F600\U00020000\u200B\u0301x\uFFFD\u00AD "
           u"tail\u6F22";
}

// Converts through ICU: to UTF-16 and on, with malformed bytes replaced.
std::string ConvertWithIcu(const std::string& in_source, EncodingType in_from, EncodingType in_to) {
    const icu::UnicodeString text(in_source.data(), static_cast<std::int32_t>(in_source.size()),
                                  EncodingInfo::GetName(in_from));
    return EncodeWithIcu({text.getBuffer(), static_cast<std::size_t>(text.length())}, in_to);
}

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
        // With a NUL, progress needs room for the longest code point and the NUL.
        const std::uint32_t leastTarget = isWithNul ? 8 : 0;
        ASSERT_EQ(whole, ConvertInPieces(
                             *converter, in_source, [&] { return random.Below(mostPiece + 1); },
                             [&] { return leastTarget + random.Below(mostTarget + 1); }, isWithNul))
            << "round " << round;
        if (testing::Test::HasFailure()) return;
    }
}

void CheckPairs(const std::vector<int>& in_from, const std::vector<int>& in_to, int in_rounds) {
    const std::u16string text = GetMixedText();
    for (const int from : in_from) {
        const std::string source = EncodeWithIcu(text, EncodingType{from});
        for (const int to : in_to) {
            CheckCuts(EncodingType{from}, EncodingType{to}, source,
                      static_cast<std::uint32_t>(from * 119 + to), in_rounds);
            if (testing::Test::HasFailure()) return;
        }
    }
}

}  // namespace Orska::Support::Testing
