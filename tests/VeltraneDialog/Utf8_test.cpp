#include "VeltraneDialog/Utf8.h"

#include <gtest/gtest.h>

namespace Veltrane::ODBC {
namespace {

// The tests of the readers and writers cover which bytes are a character.
TEST(Utf8, ConvertsATextOfEveryLength) {
    const std::string bytes = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80z";
    for (const std::size_t size : {0, 1, 3, 6, 10, 11}) {
        SCOPED_TRACE(size);
        std::u16string text;
        EXPECT_TRUE(DecodeUtf8(bytes.substr(0, size), text));
        EXPECT_EQ(text, std::u16string(u"aü€\U0001F600z").substr(0, text.size()));
        EXPECT_EQ(EncodeUtf8(text), bytes.substr(0, size));
    }
    for (const std::size_t size : {2, 4, 5, 7, 8, 9}) {
        std::u16string text;
        EXPECT_FALSE(DecodeUtf8(bytes.substr(0, size), text)) << size;
    }
}

TEST(Utf8, LoneSurrogatesAreReplaced) {
    const char16_t surrogates[] = {0xDE00, 0xD83D, u'a', 0xD83D};
    EXPECT_EQ(EncodeUtf8({surrogates, 4}), "\uFFFD\uFFFDa\uFFFD");
}

}  // namespace
}  // namespace Veltrane::ODBC
