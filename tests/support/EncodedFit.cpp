#include "tests/support/EncodedFit.h"

#include <gtest/gtest.h>
#include <unicode/unistr.h>

namespace Orska::Support::Testing {

namespace {

bool IsLead(char16_t in_unit) { return in_unit >= 0xD800 && in_unit < 0xDC00; }
bool IsTrail(char16_t in_unit) { return in_unit >= 0xDC00 && in_unit < 0xE000; }

}  // namespace

std::vector<std::string> EncodeBeginnings(std::u16string_view in_text, EncodingType in_encoding) {
    std::vector<std::string> beginnings = {""};
    for (std::size_t end = 1; end <= in_text.size(); ++end) {
        const bool isInPair =
            end < in_text.size() && IsLead(in_text[end - 1]) && IsTrail(in_text[end]);
        if (!isInPair) {
            beginnings.push_back(EncodeWithIcu(in_text.substr(0, end), in_encoding));
        }
    }
    return beginnings;
}

const std::string& GetFit(const std::vector<std::string>& in_beginnings, std::size_t in_capacity) {
    std::size_t best = 0;
    for (std::size_t i = 0; i < in_beginnings.size(); ++i) {
        if (in_beginnings[i].size() <= in_capacity) best = i;
    }
    return in_beginnings[best];
}

orska_wstring MakeString(std::u16string_view in_text) {
    orska_wstring string;
    string.SetImpl(
        new icu::UnicodeString(in_text.data(), static_cast<std::int32_t>(in_text.size())));
    return string;
}

void CheckEveryCapacity(const std::u16string& in_text, EncodingType in_encoding,
                        std::size_t in_nulWidth, const WriteString& in_write) {
    const std::vector<std::string> beginnings = EncodeBeginnings(in_text, in_encoding);
    const std::size_t needed = beginnings.back().size() + in_nulWidth;
    const orska_wstring string = MakeString(in_text);
    // With much more room a conversion writes scratch too.
    for (std::size_t capacity = in_nulWidth; capacity <= needed + 300;
         capacity += capacity < needed + 2 * in_nulWidth + 3 ? 1 : 144) {
        const std::string expected =
            GetFit(beginnings, capacity - in_nulWidth) + std::string(in_nulWidth, '\0');
        std::vector<char> buffer(capacity + 24, FILL);
        bool isTruncated = false;
        const std::int64_t written =
            in_write(string, buffer.data(), static_cast<std::int64_t>(capacity), isTruncated);
        ASSERT_EQ(expected.size() - in_nulWidth, static_cast<std::size_t>(written)) << capacity;
        ASSERT_EQ(expected, std::string(buffer.data(), expected.size())) << capacity;
        ASSERT_EQ(capacity < needed, isTruncated) << capacity;
        for (std::size_t i = expected.size(); i < buffer.size(); ++i) {
            // Zeros are allowed where a code point did not fit; no other byte may change.
            const bool isZero = isTruncated && i < capacity && buffer[i] == '\0';
            ASSERT_TRUE(buffer[i] == FILL || isZero) << capacity << " byte " << i;
        }
    }
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

const std::vector<int> CUT_ENCODINGS = {0,  1,  2,  3,  4,  5,  6,  7,  17,  18,  19, 22,
                                        24, 25, 26, 27, 28, 32, 41, 67, 111, 113, 116};

}  // namespace Orska::Support::Testing
