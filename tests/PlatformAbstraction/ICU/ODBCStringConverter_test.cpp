// Strings to and from the driver manager's buffers: lengths, NULs, truncation, recovery.
#include "PlatformAbstraction/ICU/ODBCStringConverter.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "PlatformAbstraction/ICU/WideStringConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "tests/support/IcuText.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support::Testing {
namespace {

using Test::ThrownMessage;

// Buffers are filled with this before they are written.
constexpr char FILL = '\x5A';

// The beginnings of a text that end between code points, each encoded and ended in the initial
// state; the empty one first.
std::vector<std::string> EncodeBeginnings(std::u16string_view in_text, EncodingType in_encoding) {
    std::vector<std::string> beginnings = {""};
    for (std::size_t end = 1; end <= in_text.size(); ++end) {
        const bool isInPair =
            end < in_text.size() && U16_IS_LEAD(in_text[end - 1]) && U16_IS_TRAIL(in_text[end]);
        if (!isInPair) {
            beginnings.push_back(EncodeWithIcu(in_text.substr(0, end), in_encoding));
        }
    }
    return beginnings;
}

// The longest of them that is no longer than the capacity, in bytes.
const std::string& GetFit(const std::vector<std::string>& in_beginnings, std::size_t in_capacity) {
    std::size_t best = 0;
    for (std::size_t i = 0; i < in_beginnings.size(); ++i) {
        if (in_beginnings[i].size() <= in_capacity) best = i;
    }
    return in_beginnings[best];
}

// Writes one text at every capacity from none to more than it needs. Fails the test if the result
// is not the longest beginning that fits, or if other bytes than zeros follow; without room for a
// NUL nothing is written. `in_write` returns the bytes without the NUL, of so many bytes, that it
// writes after the text.
template <typename WriteString>
void CheckEveryCapacity(const std::u16string& in_text, EncodingType in_encoding,
                        std::size_t in_nulWidth, const WriteString& in_write) {
    const std::vector<std::string> beginnings = EncodeBeginnings(in_text, in_encoding);
    const std::size_t needed = beginnings.back().size() + in_nulWidth;
    const orska_wstring string = MakeString(in_text);
    // With much more room a conversion writes scratch too.
    for (std::size_t capacity = 0; capacity <= needed + 300;
         capacity += capacity < needed + 2 * in_nulWidth + 3 ? 1 : 144) {
        const bool hasRoom = capacity >= in_nulWidth;
        const std::string fit = hasRoom ? GetFit(beginnings, capacity - in_nulWidth) : "";
        const std::string expected = fit + std::string(hasRoom ? in_nulWidth : 0, '\0');
        std::vector<char> buffer(capacity + 24, FILL);
        bool isTruncated = capacity >= needed;
        const std::int64_t written =
            in_write(string, buffer.data(), static_cast<std::int64_t>(capacity), isTruncated);
        ASSERT_EQ(fit.size(), static_cast<std::size_t>(written)) << capacity;
        ASSERT_EQ(expected, std::string(buffer.data(), expected.size())) << capacity;
        ASSERT_EQ(capacity < needed, isTruncated) << capacity;
        for (std::size_t i = expected.size(); i < buffer.size(); ++i) {
            // Zeros are allowed where a code point did not fit; no other byte may change.
            const bool isZero = isTruncated && i < capacity && buffer[i] == '\0';
            ASSERT_TRUE(buffer[i] == FILL || isZero) << capacity << " byte " << i;
        }
    }
}

// A converter for a driver manager's encoding, with its own platform converter.
struct Fixture {
    explicit Fixture(int in_encoding) {
        orska_wstring::SetDriverManagerEncoding(EncodingType{in_encoding});
        m_converter = std::make_unique<ODBCStringConverter>(m_platform);
    }
    WideStringConverter m_platform;
    std::unique_ptr<ODBCStringConverter> m_converter;
};

TEST(ODBCStringConverter, ATargetCanBeAsLongAsItsPresentText) {
    const Fixture fixture(1);
    std::string buffer("x\0x\0x\0\0\0xx", 10);
    std::string empty("\0\0xx", 4);
    const auto write = [&](const char16_t* in_text, std::string& io_buffer) {
        bool isTruncated = false;
        const std::int64_t written = fixture.m_converter->ConvertWStringToSQLWCHARString(
            MakeString(in_text), io_buffer.data(), -3, false, isTruncated);
        EXPECT_TRUE(isTruncated);
        return written;
    };
    EXPECT_EQ(2, write(u"abcd", buffer));
    EXPECT_EQ(std::string("a\0b\0\0\0\0\0xx", 10), buffer);
    EXPECT_EQ(0, write(u"a", empty));
    EXPECT_EQ(std::string("\0\0xx", 4), empty);
}

TEST(ODBCStringConverter, AcceptsNullStringsAndNullBuffers) {
    const Fixture fixture(1);
    std::string buffer = "xxxx";
    bool isTruncated = true;
    EXPECT_EQ(0, fixture.m_converter->ConvertWStringToSQLWCHARString(orska_wstring(), buffer.data(),
                                                                     2, false, isTruncated));
    EXPECT_FALSE(isTruncated);
    EXPECT_EQ(std::string("\0\0xx", 4), buffer);
    EXPECT_EQ(0, fixture.m_converter->ConvertWStringToSQLWCHARString(MakeString(u"a"), nullptr, 9,
                                                                     false, isTruncated));
    EXPECT_TRUE(isTruncated);
    EXPECT_EQ(0, fixture.m_converter->GetLengthAsSQLWCHARString(orska_wstring(), true));
    EXPECT_EQ(0, fixture.m_converter->GetLengthAsSQLCHARString(orska_wstring()));
    orska_wstring result = MakeString(u"old");
    fixture.m_converter->ConvertSQLWCHARToWString(nullptr, -3, false, result);
    EXPECT_TRUE(result.IsNull());
    fixture.m_converter->ConvertSQLCHARToWString(nullptr, 5, result);
    EXPECT_TRUE(result.IsNull());
}

// Writes one text into every capacity, in code units and in bytes.
void CheckCuts(ODBCStringConverter& io_converter, const std::u16string& in_text) {
    const EncodingType encoding = io_converter.GetDriverManagerEncoding();
    const std::int64_t width = EncodingInfo::GetCodeUnitWidth(encoding);
    const auto full = static_cast<std::int64_t>(EncodeWithIcu(in_text, encoding).size());
    const orska_wstring string = MakeString(in_text);
    ASSERT_EQ(full, io_converter.GetLengthAsSQLWCHARString(string, true));
    ASSERT_EQ(full / width, io_converter.GetLengthAsSQLWCHARString(string, false));
    CheckEveryCapacity(in_text, encoding, static_cast<std::size_t>(width),
                       [&](const orska_wstring& in_string, char* out_buffer,
                           std::int64_t in_capacity, bool& out_truncated) {
                           const bool isInBytes = in_capacity % width != 0 || in_capacity % 3 == 0;
                           const std::int64_t unit = isInBytes ? 1 : width;
                           return unit * io_converter.ConvertWStringToSQLWCHARString(
                                             in_string, out_buffer, in_capacity / unit, isInBytes,
                                             out_truncated);
                       });
}

// Encodings of every kind that truncation has to handle: the Unicode ones, multi-byte ones of up to
// four bytes, and those with shift states.
const std::vector<int> CUT_ENCODINGS = {0,  1,  2,  3,  4,  5,  6,  7,  17,  18,  19, 22,
                                        24, 25, 26, 27, 28, 32, 41, 67, 111, 113, 116};

TEST(ODBCStringConverter, CutsExactlyAtEveryCapacity) {
    Random random(23);
    for (const int encoding : CUT_ENCODINGS) {
        SCOPED_TRACE(EncodingInfo::GetName(EncodingType{encoding}));
        const Fixture fixture(encoding);
        // Many encodings lack the zero width space, for which ICU then writes nothing.
        for (const std::u16string& text :
             {MakeRandomText(random, 1), MakeRandomText(random, 17), MakeRandomText(random, 150),
              std::u16string(129, u'a') + u"\u6F22", u"\u6F22" + std::u16string(64, u'a'),
              std::u16string(u"ab\u200B\u200B"), std::u16string()}) {
            CheckCuts(*fixture.m_converter, text);
            if (testing::Test::HasFailure()) return;
        }
    }
}

// A few conversions find the cut, however many code points without bytes are at the end.
TEST(EncodeThroughIcu, CutsTextOfSilentCodePointsInAFewAttempts) {
    for (const int encoding : {17, 22, 24, 25, 27, 28, 67}) {
        SCOPED_TRACE(EncodingInfo::GetName(EncodingType{encoding}));
        UErrorCode status = U_ZERO_ERROR;
        const icu::LocalUConverterPointer converter(
            ucnv_open(EncodingInfo::GetName(EncodingType{encoding}), &status));
        for (const std::u16string text :
             {u"\u4E2D\u6587", u"a\u4E2D", u"\u4E2D\u200Ba\u6587\u4E2D"}) {
            const std::vector<std::string> beginnings =
                EncodeBeginnings(text, EncodingType{encoding});
            for (std::size_t capacity = 1; capacity < beginnings.back().size(); ++capacity) {
                std::string buffer(capacity, FILL);
                int attempts = 0;
                const EncodedText encoded = EncodeThroughIcu(
                    *converter, text + std::u16string(3000, u'\u200B'), buffer.data(),
                    static_cast<std::int64_t>(capacity), attempts, status);
                const std::string& fit = GetFit(beginnings, capacity);
                EXPECT_EQ(fit, buffer.substr(0, static_cast<std::size_t>(encoded.m_bytes)));
                EXPECT_TRUE(encoded.m_isTruncated);
                EXPECT_GE(5, attempts) << capacity;
            }
        }
    }
}

// Texts that change a converter's state: a code point without bytes, a cut pair, a shift.
TEST(ODBCStringConverter, BytesDoNotDependOnEarlierTexts) {
    const std::u16string lead(1, char16_t{0xD800});
    const std::u16string texts[] = {
        u"\u00AD", u"\uFFA0",       u"a\u200B", u"x" + lead + u"yz", lead,         u"\u4E2D\u6587",
        u"\uFF71", u"\u00E9\uFFFD", u"",        u"\U00020000\u0304", u"\U0001F601"};
    for (int encoding = 0; encoding < ENCODING_COUNT; ++encoding) {
        SCOPED_TRACE(EncodingInfo::GetName(EncodingType{encoding}));
        const Fixture fixture(encoding);
        const auto stream = StreamConverterFactory::CreateConverter(EncodingType::ENC_UTF16LE,
                                                                    EncodingType{encoding});
        std::string buffer(64, FILL);
        WideStringConverter platform;
        const auto toPlatform = [&](const std::u16string& in_text, std::int64_t in_capacity) {
            return buffer.substr(
                0, static_cast<std::size_t>(platform.ConvertFromWString(
                       MakeString(in_text), buffer.data(), in_capacity, EncodingType{encoding})));
        };
        const auto toDriverManager = [&](const std::u16string& in_text, std::int64_t in_capacity) {
            bool isTruncated = false;
            return buffer.substr(
                0, static_cast<std::size_t>(fixture.m_converter->ConvertWStringToSQLWCHARString(
                       MakeString(in_text), buffer.data(), in_capacity, true, isTruncated)));
        };
        const auto toStream = [&](const std::u16string& in_text) {
            stream->SetSource(reinterpret_cast<const char*>(in_text.data()),
                              in_text.size() * sizeof(char16_t), true);
            stream->SetTarget(buffer.data(), buffer.size());
            stream->DoConvert();
            return buffer.substr(0, stream->GetTargetPosition());
        };
        // The transcoder refuses malformed text; the others replace it.
        const bool isStream = encoding > 7 && encoding != 96;
        for (const std::u16string& before : texts) {
            for (const std::u16string& text : texts) {
                const orska_wstring string = MakeString(text);
                const std::string expected = EncodeWithIcu(text, EncodingType{encoding});
                const auto length = static_cast<std::int64_t>(expected.size());
                for (const std::int64_t capacity : {64, 5}) {
                    toPlatform(before, capacity);
                    EXPECT_EQ(length, platform.GetLengthInBytes(string, EncodingType{encoding}));
                    toPlatform(before, capacity);
                    EXPECT_EQ(expected, toPlatform(text, 64));
                    toDriverManager(before, capacity);
                    EXPECT_EQ(length, fixture.m_converter->GetLengthAsSQLWCHARString(string, true));
                    toDriverManager(before, capacity);
                    EXPECT_EQ(expected, toDriverManager(text, 64));
                }
                if (isStream && !text.empty()) {
                    toStream(before);
                    EXPECT_EQ(expected, toStream(text));
                }
            }
            if (HasFailure()) return;
        }
    }
}

// A driver manager may pass the greatest length for "as long as needed".
TEST(ODBCStringConverter, AcceptsEveryLegalByteLength) {
    const Fixture fixture(1);
    for (const std::int64_t length : {INT64_MAX, INT64_MAX / 2, INT64_MAX / 4 + 1}) {
        char buffer[8] = {};
        bool isTruncated = true;
        EXPECT_EQ(4, fixture.m_converter->ConvertWStringToSQLWCHARString(
                         MakeString(u"ab"), buffer, length, true, isTruncated));
        EXPECT_EQ(2, fixture.m_converter->ConvertWStringToSQLCHARString(MakeString(u"ab"), buffer,
                                                                        length, isTruncated));
        EXPECT_FALSE(isTruncated);
    }
    char buffer[8] = {};
    bool isTruncated = true;
    EXPECT_EQ(2, fixture.m_converter->ConvertWStringToSQLWCHARString(
                     MakeString(u"ab"), buffer, INT64_MAX / 2, false, isTruncated));
    EXPECT_EQ("ICUConvErrNotRecog", ThrownMessage([&] {
                  fixture.m_converter->ConvertWStringToSQLWCHARString(
                      MakeString(u"ab"), buffer, INT64_MAX / 2 + 1, false, isTruncated);
              }));
}

TEST(ODBCStringConverter, ReadsWideBuffers) {
    const struct {
        const char* m_point;
        int m_encoding;
        std::u16string m_text;
        std::int64_t m_length;
        bool m_isInBytes;
        std::u16string m_expected;
    } cases[] = {
        {"code units", 1, u"abc", 2, false, u"ab"},
        {"bytes", 1, u"abc", 2, true, u"a"},
        {"NUL-terminated", 1, u"ab", -3, false, u"ab"},
        {"NUL-terminated, the switch does not matter", 1, u"ab", -3, true, u"ab"},
        {"length 0", 1, u"x", 0, false, u""},
        {"four bytes a unit", 3, u"\u6F22ab", 2, false, u"\u6F22a"},
        {"one byte a unit", 0, u"\u6F22ab", 4, false, u"\u6F22a"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        const Fixture fixture(c.m_encoding);
        const std::string bytes =
            EncodeWithIcu(c.m_text, EncodingType{c.m_encoding}) + std::string(4, '\0');
        orska_wstring result = MakeString(u"old");
        fixture.m_converter->ConvertSQLWCHARToWString(bytes.data(), c.m_length, c.m_isInBytes,
                                                      result);
        EXPECT_TRUE(result == MakeString(c.m_expected));
        EXPECT_EQ("ICUConvErrNotRecog", ThrownMessage([&] {
                      fixture.m_converter->ConvertSQLWCHARToWString("ab", -1, true, result);
                  }));
        EXPECT_TRUE(result == MakeString(c.m_expected));
    }
}

TEST(ODBCStringConverter, UsesTheAnsiEncodingForNarrowBuffers) {
    const Fixture fixture(1);
    SetAnsiEncoding(EncodingType{18});
    const orska_wstring string = MakeString(u"a\u6F22");
    EXPECT_EQ(3, fixture.m_converter->GetLengthAsSQLCHARString(string));
    CheckEveryCapacity(u"a\u6F22", EncodingType{18}, 1,
                       [&](const orska_wstring& in_string, char* out_buffer,
                           std::int64_t in_capacity, bool& out_truncated) {
                           return fixture.m_converter->ConvertWStringToSQLCHARString(
                               in_string, out_buffer, in_capacity, out_truncated);
                       });
    bool isTruncated = false;
    EXPECT_EQ(0,
              fixture.m_converter->ConvertWStringToSQLCHARString(string, nullptr, 0, isTruncated));
    EXPECT_TRUE(isTruncated);
    std::string buffer("xx\0x", 4);
    EXPECT_EQ(1, fixture.m_converter->ConvertWStringToSQLCHARString(string, buffer.data(), -3,
                                                                    isTruncated));
    EXPECT_EQ(std::string("a\0\0x", 4), buffer);
    orska_wstring result;
    fixture.m_converter->ConvertSQLCHARToWString(
        "a\x8A\xBF"
        "b",
        3, result);
    EXPECT_TRUE(result == string);
    fixture.m_converter->ConvertSQLCHARToWString("a\x8A\xBF", -3, result);
    EXPECT_TRUE(result == string);
    EXPECT_EQ("ICUConvErrNotRecog", ThrownMessage([&] {
                  fixture.m_converter->ConvertSQLCHARToWString("a", -4, result);
              }));
    EXPECT_EQ("ICUConvErrNotRecog", ThrownMessage([&] {
                  fixture.m_converter->ConvertWStringToSQLCHARString(string, nullptr, -2,
                                                                     isTruncated);
              }));
}

TEST(ODBCStringConverter, SizesBuffersForNarrowText) {
    const struct {
        int m_encoding;
        std::int64_t m_length;
        bool m_isInBytes, m_isWithNul;
        std::uint32_t m_expected;
    } cases[] = {
        {1, -3, false, true, 8},  {1, -3, true, true, 16}, {1, -3, false, false, 6},
        {1, 10, false, true, 22}, {3, 3, true, true, 16},  {0, 2, true, false, 8},
        {18, 0, true, true, 2},   {1, 0, true, false, 0},
    };
    for (const auto& c : cases) {
        const Fixture fixture(c.m_encoding);
        EXPECT_EQ(c.m_expected,
                  ODBCStringConverter::GetSQLCHARToSQLWCHARMaxBufferLength(
                      *fixture.m_converter, "abc", c.m_length, c.m_isInBytes, c.m_isWithNul));
    }
    const Fixture fixture(1);
    const auto keyFor = [&](const char* in_text, std::int64_t in_length) {
        return ThrownMessage([&] {
            ODBCStringConverter::GetSQLCHARToSQLWCHARMaxBufferLength(*fixture.m_converter, in_text,
                                                                     in_length, true, true);
        });
    };
    EXPECT_EQ("InvalidNullParam", keyFor(nullptr, 3));
    EXPECT_EQ("ICUConvErrNotRecog", keyFor("abc", -1));
    EXPECT_EQ("nothing", keyFor("abc", 0xFFFFFFFF / 4 - 1));
    EXPECT_EQ("ICUConvErrNotRecog", keyFor("abc", 0xFFFFFFFF / 4));
    EXPECT_EQ("ICUConvErrNotRecog", keyFor("abc", INT64_MAX));
}

TEST(ODBCStringConverter, RefusesAProcessWithoutADriverManagerEncoding) {
    EXPECT_EQ("EncodingNotRecog", ThrownMessage([] { Fixture fixture(-1); }));
    EXPECT_EQ("EncodingNotRecog", ThrownMessage([] { Fixture fixture(119); }));
}

TEST(ODBCStringConverter, ConvertsInManyThreadsAtOnce) {
    constexpr int THREADS = 8;
    constexpr int ROUNDS = 4000;
    for (const int encoding : {0, 1, 18, 24, 67}) {
        const Fixture fixture(encoding);
        const std::u16string text = GetMixedText();
        const std::string expected = EncodeWithIcu(text, EncodingType{encoding});
        const orska_wstring decoded(expected.data(), expected.size(), EncodingType{encoding});
        std::atomic<int> failures = 0;
        const auto work = [&] {
            const orska_wstring string = MakeString(text);
            std::string buffer(expected.size() + 8, '\0');
            for (int i = 0; i < ROUNDS; ++i) {
                bool isTruncated = false;
                const bool isCut = i % 4 == 3;
                const std::int64_t written = fixture.m_converter->ConvertWStringToSQLWCHARString(
                    string, buffer.data(), isCut ? 40 : static_cast<std::int64_t>(buffer.size()),
                    true, isTruncated);
                orska_wstring back;
                fixture.m_converter->ConvertSQLWCHARToWString(buffer.data(), written, true, back);
                const bool isRight =
                    isCut || buffer.compare(0, static_cast<std::size_t>(written), expected) == 0;
                const bool isBackRight = isCut ? !back.IsEmpty() : back == decoded;
                if (!isRight || isTruncated != isCut || !isBackRight) ++failures;
            }
        };
        std::vector<std::thread> threads;
        for (int i = 0; i < THREADS; ++i) threads.emplace_back(work);
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(0, failures);
        EXPECT_GE(std::size_t{THREADS},
                  fixture.m_platform.CountPooledConverters(EncodingType{encoding}));
    }
}

}  // namespace
}  // namespace Orska::Support::Testing
