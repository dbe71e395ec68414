// The string's own conversions, and the platform's, have the same bytes and units as ICU's.
#include "PlatformAbstraction/strings/StringCodec.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "PlatformAbstraction/ICU/ShortText.h"
#include "PlatformAbstraction/ICU/WideStringConverter.h"
#include "PlatformAbstraction/base/CpuLevel.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "tests/support/IcuText.h"

namespace Orska::Support::Testing {
namespace {

constexpr std::int32_t OWN_ENCODINGS = 8;  // the first ones

void ExpectDecodesAsIcu(const std::string& in_bytes, EncodingType in_encoding) {
    // A block of exactly this size, so that the sanitizers find a read past it.
    const std::unique_ptr<char[]> exact(new char[in_bytes.size()]);
    std::memcpy(exact.get(), in_bytes.data(), in_bytes.size());
    const auto size = static_cast<std::int32_t>(in_bytes.size());
    const std::unique_ptr<icu::UnicodeString> ours(DecodeText(exact.get(), size, in_encoding));
    const icu::UnicodeString icus(in_bytes.data(), size, EncodingInfo::GetName(in_encoding));
    static WideStringConverter s_platform;
    static orska_wstring s_platforms;
    s_platform.ConvertToWString(exact.get(), size, in_encoding, s_platforms);
    EXPECT_TRUE(icus == *ours && icus == *s_platforms.GetImpl())
        << EncodingInfo::GetName(in_encoding) << " " << testing::PrintToString(in_bytes);
}

void ExpectEncodesAsIcu(const std::u16string& in_units, EncodingType in_encoding) {
    const icu::UnicodeString text(in_units.data(), static_cast<std::int32_t>(in_units.size()));
    EXPECT_EQ(EncodeWithIcu(in_units, in_encoding), EncodeText(text, in_encoding))
        << EncodingInfo::GetName(in_encoding) << " " << testing::PrintToString(in_units);
}

// Text with a run of plain units anywhere in it, for the short and the long ways.
std::u16string MakeText(Random& io_random, std::uint32_t in_length) {
    constexpr std::u16string_view RARE =
        u"\u007F\u0080\u009F\u00AD\u0152\u07FF\u0800\u2019\u2122\u200B\u20AC"
        u"\uE000\uFE0F\uFEFF\uFFFD\uFFFF\U0001F600\U000E0001";
    std::u16string text = MakeRandomText(io_random, io_random.Below(in_length + 1));
    for (int i = 0; i < 3 && !text.empty(); ++i) {
        text[io_random.Below(static_cast<std::uint32_t>(text.size()))] =
            RARE[io_random.Below(RARE.size())];
    }
    const std::size_t plain = in_length > text.size() ? in_length - text.size() : 0;
    text.insert(io_random.Below(static_cast<std::uint32_t>(text.size()) + 1), plain, u'x');
    return text.substr(0, in_length);
}

TEST(StringCodecTest, ConvertsRandomTextAsIcuDoes) {
    Random random(20240607);
    for (std::int32_t i = 0; i < ENCODING_COUNT; ++i) {
        const EncodingType encoding{i};
        const std::uint32_t rounds = i < OWN_ENCODINGS ? 1500 : 40;
        for (std::uint32_t round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
            const std::u16string units = MakeText(random, round % 75);
            ExpectEncodesAsIcu(units, encoding);
            // Its encoded bytes, cut anywhere, with some that may be invalid.
            std::string bytes = EncodeWithIcu(units, encoding);
            bytes.resize(random.Below(static_cast<std::uint32_t>(bytes.size()) + 1));
            ExpectDecodesAsIcu(bytes, encoding);
            for (std::uint32_t at = random.Below(8); at < bytes.size();
                 at += 1 + random.Below(30)) {
                bytes[at] = static_cast<char>(random.Below(256));
            }
            ExpectDecodesAsIcu(bytes, encoding);
        }
        const std::u16string longText = MakeRandomText(random, 60000) + std::u16string(40000, u'x');
        ExpectEncodesAsIcu(longText, encoding);
        ExpectDecodesAsIcu(EncodeWithIcu(longText, encoding), encoding);
    }
}

TEST(StringCodecTest, ConvertsEveryByteAndCodePointAsIcuDoes) {
    icu::UnicodeString text;
    for (UChar32 codePoint = 1; codePoint < 0x110000; ++codePoint) {
        if (!U_IS_SURROGATE(codePoint)) text.append(codePoint);
    }
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
    const std::u16string units(text.getBuffer(), static_cast<std::size_t>(text.length()));
    for (const int encoding : {0, 1, 2, 3, 4, 5, 6, 7, 96}) {
        ExpectEncodesAsIcu(units, EncodingType{encoding});
        ExpectDecodesAsIcu(encoding < 5 ? EncodeWithIcu(units, EncodingType{encoding}) : bytes,
                           EncodingType{encoding});
    }
}

TEST(StringCodecTest, DecodesEveryLeadWithBoundaryContinuationsAsIcuDoes) {
    const std::string follow("\x00\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xFF", 11);
    for (int lead = 0xC0; lead < 0x100; ++lead) {
        std::string bytes;
        for (const char second : follow) {
            for (const char third : follow) {
                for (const char fourth : follow) {
                    bytes += {static_cast<char>(lead), second, third, fourth, 'x'};
                }
                ExpectDecodesAsIcu({static_cast<char>(lead), second, third},
                                   EncodingType::ENC_UTF8);
            }
        }
        ExpectDecodesAsIcu(bytes, EncodingType::ENC_UTF8);
    }
}

// Texts that surely fit do without the general conversion, which is slower.
TEST(StringCodecTest, ShortTextsAreTakenWhole) {
    for (const EncodingType form :
         {EncodingType::ENC_UTF8, EncodingType::ENC_UTF16LE, EncodingType::ENC_UTF32LE}) {
        if (form == EncodingType::ENC_UTF8 && GetCpuLevel() < CpuLevel::SSE42) continue;
        for (const std::u16string_view unit : {u"a", u"\u00E9", u"\u6F22", u"\U0001F600"}) {
            for (std::u16string text(unit); text.size() <= MOST_SHORT_UNITS; text += unit) {
                // Pairs need a whole vector there.
                const bool isFew = text.size() < 8 && unit.size() == 2;
                if (form == EncodingType::ENC_UTF16LE && isFew) continue;
                const std::string bytes = EncodeWithIcu(text, form);
                // Where they just fit they may be refused.
                for (const std::size_t room : {bytes.size(), 4 * text.size()}) {
                    std::string target(room, '\0');
                    const std::int64_t size =
                        GetShortEncoder(form)(text, target.data(), static_cast<std::int64_t>(room));
                    if (size < 0 && room < 4 * text.size()) continue;
                    ASSERT_EQ(bytes.size(), size) << EncodingInfo::GetName(form) << text.size();
                    ASSERT_EQ(bytes, target.substr(0, bytes.size()));
                }
                if (bytes.size() > MOST_SHORT_BYTES) continue;
                char16_t back[SHORT_UNITS_ROOM];
                ASSERT_EQ(text.size(), GetShortDecoder(form)(bytes, back));
                ASSERT_EQ(text, std::u16string_view(back, text.size()));
            }
        }
    }
}

}  // namespace
}  // namespace Orska::Support::Testing
