#include "VeltraneDialog/Utf8.h"

#include <gtest/gtest.h>

namespace Veltrane::ODBC {
namespace {

TEST(Utf8, EncodesAndDecodesEveryLength) {
    const std::pair<std::string, std::u16string> cases[] = {
        {"", u""},
        {"\x7F", u"\u007F"},
        {"\xC2\x80", u"\u0080"},
        {"\xDF\xBF", u"\u07FF"},
        {"\xE0\xA0\x80", u"\u0800"},
        {"\xED\x9F\xBF", u"\uD7FF"},
        {"\xEE\x80\x80", u"\uE000"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xF0\x90\x80\x80", u"\U00010000"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80z", u"aü€\U0001F600z"},
    };
    for (const auto& [bytes, text] : cases) {
        SCOPED_TRACE(bytes);
        std::u16string decoded;
        EXPECT_TRUE(DecodeUtf8(bytes, decoded));
        EXPECT_EQ(decoded, text);
        EXPECT_EQ(EncodeUtf8(text), bytes);
    }
}

TEST(Utf8, RefusesWhatIsNotUtf8) {
    for (const char* bytes :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2\x41", "\xE0\x9F\xBF", "\xE2\x82",
          "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x9F\x98", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xFE", "\xFF"}) {
        SCOPED_TRACE(bytes);
        std::u16string decoded;
        EXPECT_FALSE(DecodeUtf8(bytes, decoded));
    }
}

TEST(Utf8, LoneSurrogatesAreReplaced) {
    const char16_t lead = 0xD83D;
    const char16_t trail = 0xDE00;
    EXPECT_EQ(EncodeUtf8(std::u16string{lead}), "\xEF\xBF\xBD");
    EXPECT_EQ(EncodeUtf8(std::u16string{trail, lead}), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(EncodeUtf8(std::u16string{lead, u'a'}),
              "\xEF\xBF\xBD"
              "a");
}

}  // namespace
}  // namespace Veltrane::ODBC
