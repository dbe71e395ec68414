#include "PlatformAbstraction/orska_wstring.h"

#include <gtest/gtest.h>

#include <string>

#include "Exceptions/ErrorException.h"

namespace Orska::Support {
namespace {

TEST(OrskaWstringTest, NullIsDistinctFromEmpty) {
    const orska_wstring null;
    const orska_wstring empty("");
    EXPECT_TRUE(null.IsNull());
    EXPECT_TRUE(null.IsEmpty());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_NE(null, empty);
    EXPECT_LT(null, empty);
    EXPECT_FALSE(empty < null);
}

TEST(OrskaWstringTest, GivesTheTextInEachForm) {
    const orska_wstring text(u"a\u20AC\U0001F600");
    EXPECT_EQ(text.GetLength(), 4);
    EXPECT_EQ(text.GetAsUtf8(), "a\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(text.GetAsPlatformWString(), L"a\u20AC\U0001F600");
    EXPECT_EQ(text.GetAsUtf16(), u"a\u20AC\U0001F600");
    EXPECT_EQ(text, orska_wstring(L"a\u20AC\U0001F600"));
    EXPECT_EQ(text, orska_wstring("a\xE2\x82\xAC\xF0\x9F\x98\x80"));
}

TEST(OrskaWstringTest, AnInvalidPatternLeavesTheString) {
    orska_wstring text(u"abc");
    try {
        text.RegexReplace(L"[", L"x");
        FAIL();
    } catch (const ErrorException& exception) {
        EXPECT_EQ(exception.GetMessageKeyOrText(), orska_wstring(L"ICURegexError"));
        ASSERT_EQ(exception.GetMessageParameters().size(), 1u);
        EXPECT_EQ(exception.GetMessageParameters()[0], orska_wstring(L"["));
    }
    EXPECT_EQ(text, orska_wstring(L"abc"));
}

}  // namespace
}  // namespace Orska::Support
