// What decides between these conversions and ICU. Transcoder_test compares the conversions
// themselves with slow reference code.
#include "PlatformAbstraction/ICU/UnicodeForms.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/StreamDriver.h"

namespace Orska::Support::Testing {
namespace {

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
