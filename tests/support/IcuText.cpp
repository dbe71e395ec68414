#include "tests/support/IcuText.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support::Testing {

namespace {

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

orska_wstring MakeString(std::u16string_view in_text) {
    orska_wstring string;
    string.SetImpl(
        new icu::UnicodeString(in_text.data(), static_cast<std::int32_t>(in_text.size())));
    return string;
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

std::u16string MakeRandomText(Random& io_random, std::size_t in_codePoints) {
    struct Range {
        std::uint32_t m_first, m_count;
        bool m_isLead = false;
    };
    constexpr Range RANGES[] = {{0x20, 0x5F},   {0x20, 0x5F},          {0xA0, 0x300},
                                {0x300, 0x70},  {0x4E00, 0x5000},      {0x4E00, 0x5000},
                                {0x3041, 0x50}, {0xD800, 0x400, true}, {0xD800, 0x800}};
    std::u16string text;
    for (std::size_t i = 0; i < in_codePoints; ++i) {
        const Range& range = RANGES[io_random.Below(std::size(RANGES))];
        text += static_cast<char16_t>(range.m_first + io_random.Below(range.m_count));
        if (range.m_isLead) text += static_cast<char16_t>(0xDC00 + io_random.Below(0x400));
    }
    return text;
}

}  // namespace Orska::Support::Testing
