// Short texts, whole or refused, compared with slow reference code.
#include "PlatformAbstraction/ICU/ShortText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "PlatformAbstraction/base/CpuLevel.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/StreamDriver.h"
#include "tests/support/TestSystem.h"
#include "tests/support/TranscoderReference.h"

namespace Orska::Support::Testing {
namespace {

constexpr int FORMS[] = {UTF8, UTF16LE, UTF32LE};
constexpr std::size_t PAGE = 4096;

std::string ToForm(const std::string& in_bytes, int in_from, int in_to, bool& out_isValid) {
    const ReferenceResult result = ReferenceTranscode(in_from, in_to, in_bytes, PAGE);
    out_isValid = result.m_result == TRANSCODER_DONE;
    return result.m_bytes;
}

// True if a valid text with enough room has to be converted.
bool IsOffered(int in_form, std::size_t in_units) {
    return in_form == UTF8 ? GetCpuLevel() >= CpuLevel::SSE42 : in_form != UTF16LE || in_units >= 8;
}

class ShortText : public testing::Test {
protected:
    void CheckEncoding(int in_form, const std::string& in_utf16) {
        bool isValid = false;
        const std::string expected = ToForm(in_utf16, UTF16LE, in_form, isValid);
        const std::u16string_view text(
            reinterpret_cast<const char16_t*>(m_source.PutAtEnd(in_utf16)), in_utf16.size() / 2);
        const ShortEncoder encoder = GetShortEncoder(EncodingType{in_form});
        for (std::size_t room = 0; room <= 4 * text.size() + 2; ++room) {
            char* const target = m_target.GetEnd() - room;
            std::memset(target, FILL, room);
            const std::int64_t bytes = encoder(text, target, static_cast<std::int64_t>(room));
            if (bytes < 0) {
                const bool isRoomy = room >= std::max(expected.size(), 4 * text.size());
                ASSERT_FALSE(isValid && isRoomy && IsOffered(in_form, text.size())) << room;
                continue;
            }
            ASSERT_TRUE(isValid);
            ASSERT_EQ(expected, std::string(target, static_cast<std::size_t>(bytes)));
            ASSERT_EQ(room - expected.size(), static_cast<std::size_t>(std::count(
                                                  target + bytes, m_target.GetEnd(), FILL)));
        }
    }

    void CheckDecoding(int in_form, const std::string& in_bytes) {
        bool isValid = false;
        const std::string expected = ToForm(in_bytes, in_form, UTF16LE, isValid);
        char* const target = m_target.GetEnd() - SHORT_UNITS_ROOM * sizeof(char16_t);
        const std::int64_t units = GetShortDecoder(EncodingType{in_form})(
            {m_source.PutAtEnd(in_bytes), in_bytes.size()}, reinterpret_cast<char16_t*>(target));
        if (units < 0) {
            ASSERT_FALSE(isValid && IsOffered(in_form, expected.size() / 2));
            return;
        }
        ASSERT_TRUE(isValid);
        ASSERT_EQ(expected, std::string(target, 2 * static_cast<std::size_t>(units)));
    }

    // Tests every kind and length: valid, damaged in one byte, and cut after it.
    void CheckAll() {
        Random random(31);
        for (const int form : FORMS) {
            for (const TextKind kind : TEXT_KINDS) {
                for (std::size_t length = 0; length <= MOST_SHORT_BYTES; ++length) {
                    SCOPED_TRACE(std::string(GetIndexName(form)) + ", kind " +
                                 std::to_string(static_cast<int>(kind)) + ", length " +
                                 std::to_string(length));
                    CheckText(form, kind, length, random);
                    if (HasFailure()) return;
                }
            }
        }
    }

private:
    void CheckText(int in_form, TextKind in_kind, std::size_t in_length, Random& io_random) {
        const auto seed = static_cast<unsigned>(in_length);
        std::string utf16 = MakeText(in_kind, in_length, seed, UTF16LE);
        std::string bytes = MakeText(in_kind, in_length, seed, in_form);
        utf16.resize(std::min(utf16.size(), 2 * MOST_SHORT_UNITS));
        bytes.resize(std::min(bytes.size(), MOST_SHORT_BYTES));
        for (int round = 0; round < 6; ++round) {
            CheckEncoding(in_form, utf16);
            CheckDecoding(in_form, bytes);
            if (utf16.empty() || HasFailure()) return;
            const std::size_t unit =
                2 * io_random.Below(static_cast<std::uint32_t>(utf16.size() / 2));
            utf16[unit + 1] = static_cast<char>(0xD4 + io_random.Below(12));
            const std::size_t at = io_random.Below(static_cast<std::uint32_t>(bytes.size()));
            bytes[at] = static_cast<char>(0x70 + io_random.Below(0x90));
            if (round % 2 == 1) {
                utf16.resize(unit + 2);
                bytes.resize(at + 1);
            }
        }
    }

    static constexpr char FILL = '\x5A';
    GuardedBuffer m_source{PAGE};
    GuardedBuffer m_target{PAGE};
};

TEST_F(ShortText, ConvertsWholeOrRefuses) { CheckAll(); }

TEST_F(ShortText, ConvertsWholeOrRefusesWithSse2Only) {
    Orska::Test::SetVariable("ORSKA_CPU_LEVEL", "sse2");
    CheckAll();
}

// The string's text object is reused if it is long enough; bytes in it are read first.
TEST(ShortTextDecoding, ReplacesTheTextOfAString) {
    const ShortDecoder decoder = GetShortDecoder(EncodingType::ENC_UTF16LE);
    orska_wstring string(u"the text before");
    for (const std::u16string_view text :
         {u"shorter text", u"more units than objects hold", u"abcdefgh"}) {
        const std::string_view bytes(reinterpret_cast<const char*>(text.data()), 2 * text.size());
        ASSERT_TRUE(DecodeShortText(bytes, decoder, string));
        EXPECT_EQ(text, string.GetView());
    }
    const std::u16string_view held = string.GetView();
    const std::string_view inside(reinterpret_cast<const char*>(held.data()), 2 * held.size());
    ASSERT_TRUE(DecodeShortText(inside, decoder, string));
    EXPECT_EQ(u"abcdefgh", string.GetView());
    orska_wstring null;
    ASSERT_TRUE(DecodeShortText(inside, decoder, null));
    EXPECT_EQ(u"abcdefgh", null.GetView());
}

}  // namespace
}  // namespace Orska::Support::Testing
