// Conversions between UTF-16 in memory and bytes, compared with slow reference code.
#include "PlatformAbstraction/ICU/UnicodeForms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/StreamDriver.h"
#include "tests/support/TestSystem.h"
#include "tests/support/TranscoderReference.h"

namespace Orska::Support::Testing {
namespace {

struct Form {
    int m_source, m_target;
    TranscoderFunction m_function;
};

std::vector<Form> GetForms() {
    std::vector<Form> forms;
    for (const int form : {UTF16LE, UTF16BE, UTF32LE, UTF32BE}) {
        forms.push_back({UTF16LE, form, GetUtf16Encoder(EncodingType{form})});
        forms.push_back({form, UTF16LE, GetUtf16Decoder(EncodingType{form})});
    }
    return forms;
}

// Converts into a target of exact size at an offset and compares with the reference.
void CheckAgainstReference(const Form& in_form, const std::string& in_source, std::size_t in_room,
                           std::size_t in_offset) {
    std::vector<char> source(in_offset + in_source.size());
    std::copy(in_source.begin(), in_source.end(),
              source.begin() + static_cast<std::ptrdiff_t>(in_offset));
    std::vector<char> target(in_offset + in_room + 64, '\x5A');
    TranscoderSource from{source.data(), source.size(), in_offset};
    TranscoderTarget to{target.data(), in_offset + in_room, in_offset};
    const std::int32_t result = in_form.m_function(from, to);
    const ReferenceResult expected =
        ReferenceTranscode(in_form.m_source, in_form.m_target, in_source, in_room);
    ASSERT_EQ(expected.m_result, result);
    ASSERT_EQ(expected.m_used, from.m_position - in_offset);
    ASSERT_EQ(expected.m_bytes, std::string(target.data() + in_offset, to.m_position - in_offset));
    ASSERT_EQ(64, std::count(target.end() - 64, target.end(), '\x5A'));
}

// Tests texts of each kind and length, cut, damaged, and with every size of room near the full one.
void CheckForm(const Form& in_form) {
    SCOPED_TRACE(std::string(GetIndexName(in_form.m_source)) + " to " +
                 GetIndexName(in_form.m_target));
    Random random(11);
    for (const TextKind kind : TEXT_KINDS) {
        for (std::size_t length = 0; length <= 140; ++length) {
            std::string source =
                MakeText(kind, length, static_cast<unsigned>(length), in_form.m_source);
            const std::size_t full =
                ReferenceTranscode(in_form.m_source, in_form.m_target, source, 4096).m_bytes.size();
            const std::size_t offset = length % 17;
            CheckAgainstReference(in_form, source, full, offset);
            CheckAgainstReference(in_form, source, full + 7, offset);
            CheckAgainstReference(in_form, source,
                                  full - std::min<std::size_t>(full, 1 + length % 9), 0);
            CheckAgainstReference(in_form, source,
                                  random.Below(static_cast<std::uint32_t>(full) + 1), 3);
            for (int round = 0; round < 4 && !source.empty(); ++round) {
                std::string damaged = source;
                const std::size_t at = random.Below(static_cast<std::uint32_t>(source.size()));
                damaged[at] = static_cast<char>(0xD4 + random.Below(12));
                if (round % 2 == 1) damaged.resize(at + 1);
                CheckAgainstReference(in_form, damaged, 4 * full + 8, offset);
            }
            if (testing::Test::HasFailure()) return;
        }
    }
}

// After blocks of plain text, or of pairs, where the trail is the first unit of the next test.
TEST(UnicodeForms, FindALoneTrailAnywhere) {
    for (const Form& form : GetForms()) {
        if (form.m_source != UTF16LE && form.m_source != UTF16BE) continue;
        for (const std::u16string_view piece : {u"aa", u"\U0001F600"}) {
            std::string text;
            for (int i = 0; i < 130; ++i) {
                text += EncodeWithIcu(piece, EncodingType{form.m_source});
                std::string damaged = text;
                damaged += form.m_source == UTF16LE ? std::string("\x01\xDC", 2) : "\xDC\x01";
                for (int more = 0; more < 3; ++more) damaged += text;
                CheckAgainstReference(form, damaged, 8 * damaged.size(), 0);
            }
        }
    }
}

TEST(UnicodeForms, ConvertAsTheReferenceDoes) {
    for (const Form& form : GetForms()) {
        CheckForm(form);
    }
}

TEST(UnicodeForms, ConvertAsTheReferenceDoesWithoutAvx2) {
    Orska::Test::SetVariable("ORSKA_CPU_LEVEL", "sse2");
    for (const Form& form : GetForms()) {
        CheckForm(form);
    }
}

TEST(UnicodeForms, CountTheBytesThatIcuWrites) {
    Random random(5);
    for (std::uint32_t length = 0; length < 200; ++length) {
        std::u16string text;
        for (std::uint32_t i = 0; i < length; ++i) {
            // Every kind of unit, surrogates often lone.
            constexpr std::uint32_t STARTS[] = {0x20,   0x7E,   0xA0,   0x7F0,
                                                0x4E00, 0xD800, 0xDC00, 0xFFF0};
            text += static_cast<char16_t>(STARTS[random.Below(8)] + random.Below(16));
        }
        for (const int form : {UTF8, UTF16LE, UTF16BE, UTF32LE, UTF32BE}) {
            EXPECT_EQ(EncodeWithIcu(text, EncodingType{form}).size(),
                      static_cast<std::size_t>(CountEncodedBytes(text, EncodingType{form})));
        }
    }
    EXPECT_EQ(-1, CountEncodedBytes(u"a", EncodingType::ENC_LATIN1));
}

// For each encoding that has a decoder or encoder here, ICU has the same text.
TEST(UnicodeForms, AgreeWithIcuOnEveryByteAndCodePoint) {
    std::u16string text;
    for (char32_t codePoint = 1; codePoint < 0x110000; ++codePoint) {
        if (codePoint >= 0xD800 && codePoint < 0xE000) continue;
        if (codePoint >= 0x10000) text += static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
        text +=
            static_cast<char16_t>(codePoint >= 0x10000 ? 0xDC00 + (codePoint & 0x3FF) : codePoint);
    }
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
    for (std::int32_t i = 0; i < ENCODING_COUNT; ++i) {
        const EncodingType encoding{i};
        if (const TranscoderFunction encoder = GetUtf16Encoder(encoding)) {
            std::string target(text.size() * 4, '\0');
            TranscoderSource from{reinterpret_cast<const char*>(text.data()), text.size() * 2, 0};
            TranscoderTarget to{target.data(), target.size(), 0};
            EXPECT_EQ(TRANSCODER_DONE, encoder(from, to));
            EXPECT_TRUE(EncodeWithIcu(text, encoding) == target.substr(0, to.m_position)) << i;
        }
        if (const TranscoderFunction decoder = GetUtf16Decoder(encoding)) {
            const std::string source = i < 5 ? EncodeWithIcu(text, encoding) : bytes;
            const std::string expected =
                ConvertWithIcu(source, encoding, EncodingType::ENC_UTF16LE);
            std::string target(2 * GetMostUtf16Units(encoding, source.size()), '\0');
            TranscoderSource from{source.data(), source.size(), 0};
            TranscoderTarget to{target.data(), target.size(), 0};
            EXPECT_EQ(TRANSCODER_DONE, decoder(from, to));
            EXPECT_TRUE(expected == target.substr(0, to.m_position)) << i;
        }
    }
}

}  // namespace
}  // namespace Orska::Support::Testing
