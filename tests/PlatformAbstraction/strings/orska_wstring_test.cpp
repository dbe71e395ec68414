#include "PlatformAbstraction/strings/orska_wstring.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tests/support/ThrownMessage.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {

std::ostream& operator<<(std::ostream& out_stream, const orska_wstring& in_string) {
    return out_stream << (in_string.IsNull() ? "NULL" : "\"" + in_string.GetAsUtf8() + "\"");
}

namespace {

using Test::ThrownMessage;
using Test::TraceCapture;

const orska_wstring NULL_STRING;

TEST(OrskaWstringTest, IsOnePointer) { EXPECT_EQ(sizeof(orska_wstring), sizeof(void*)); }

TEST(OrskaWstringTest, ConstructionKeepsNullAndEmptyApart) {
    const char* const nullNarrow = nullptr;
    const wchar_t* const nullWide = nullptr;
    const char16_t* const nullUtf16 = nullptr;
    const struct {
        const char* m_point;
        orska_wstring m_string;
        bool m_isNull;
        std::int32_t m_length;
    } cases[] = {
        {"nothing", {}, true, 0},
        {"nullptr", nullptr, true, 0},
        {"assigned nullptr", orska_wstring(u"a") = nullptr, true, 0},
        {"assigned narrow", orska_wstring() = "abc", false, 3},
        {"assigned wide", orska_wstring() = L"abc", false, 3},
        {"assigned null narrow", orska_wstring(u"a") = nullNarrow, true, 0},
        {"a copy of NULL", NULL_STRING, true, 0},
        {"null narrow", nullNarrow, true, 0},
        {"null narrow, length", {nullNarrow, 5}, true, 0},
        {"null narrow, length, encoding", {nullNarrow, 5, EncodingType::ENC_CP1252}, true, 0},
        {"null wide", nullWide, true, 0},
        {"null wide, length", {nullWide, 5}, true, 0},
        {"null UTF-16", nullUtf16, true, 0},
        {"null UTF-16, length", {nullUtf16, 5}, true, 0},
        {"empty std::string", std::string(), false, 0},
        {"empty narrow", "", false, 0},
        {"narrow of length 0", {"abc", 0}, false, 0},
        {"narrow of length 0, encoding", {"abc", 0, EncodingType::ENC_LATIN1}, false, 0},
        {"empty std::wstring", std::wstring(), false, 0},
        {"empty wide", L"", false, 0},
        {"wide of length 0", {L"abc", 0}, false, 0},
        {"empty std::u16string", std::u16string(), false, 0},
        {"empty UTF-16", u"", false, 0},
        {"no copies of a unit", {u'x', 0}, false, 0},
        {"three copies of a unit", {u'x', 3}, false, 3},
        {"narrow up to the NUL", "ab\0cd", false, 2},
        {"narrow with a NUL inside", {"ab\0cd", 5}, false, 5},
        {"std::string with a NUL inside", std::string("ab\0cd", 5), false, 5},
        {"wide up to the NUL", L"ab\0cd", false, 2},
        {"wide with a NUL inside", {L"ab\0cd", 5}, false, 5},
        {"UTF-16 with a NUL inside", {u"ab\0cd", 5}, false, 5},
        {"a pair from wide text", L"\U0001F600", false, 2},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_point);
        EXPECT_EQ(row.m_string.IsNull(), row.m_isNull);
        EXPECT_EQ(row.m_string.IsEmpty(), row.m_length == 0);
        EXPECT_EQ(row.m_string.GetLength(), row.m_length);
        EXPECT_EQ(row.m_string.GetLengthInBytes(), 2 * row.m_length);
    }
}

TEST(OrskaWstringTest, ReadsAndReturnsTheSameTextInEachForm) {
    const orska_wstring text(u"a\u20AC\0\U0001F600", 5);
    const std::string utf8("a\xE2\x82\xAC\0\xF0\x9F\x98\x80", 9);
    const std::wstring wide(L"a\u20AC\0\U0001F600", sizeof(wchar_t) == 2 ? 5 : 4);
    const std::string utf16be("\0a\x20\xAC\0\0\xD8\x3D\xDE\0", 10);
    EXPECT_EQ(orska_wstring(utf8), text);
    EXPECT_EQ(orska_wstring(wide), text);
    EXPECT_EQ(orska_wstring(utf16be.data(), utf16be.size(), EncodingType::ENC_UTF16BE), text);
    EXPECT_EQ(text.GetAsUtf8(), utf8);
    EXPECT_EQ(text.GetAsAnsiString(), utf8);
    EXPECT_EQ(text.GetAsAnsiString(EncodingType::ENC_UTF16BE), utf16be);
    EXPECT_EQ(text.GetAsAnsiString(EncodingType::ENC_CP1252), std::string("a\x80\0\x1A", 4));
    EXPECT_EQ(text.GetAsPlatformWString(), wide);
    EXPECT_EQ(text.GetAsUtf16(), std::u16string(u"a\u20AC\0\U0001F600", 5));
    EXPECT_EQ(text.GetView(), std::u16string_view(u"a\u20AC\0\U0001F600", 5));
    for (const orska_wstring& none : {NULL_STRING, orska_wstring(u"")}) {
        EXPECT_EQ(none.GetAsUtf8() + none.GetAsAnsiString(), "");
        EXPECT_EQ(none.GetAsAnsiString(EncodingType::ENC_UTF16LE), "");
        EXPECT_EQ(none.GetAsPlatformWString(), L"");
        EXPECT_EQ(none.GetAsUtf16(), u"");
    }
}

TEST(OrskaWstringTest, RefusesTextThatIsTooLong) {
    constexpr std::size_t TOO_LONG = std::size_t{1} << 31;
    const char* const narrow = "x";
    const wchar_t* const wide = L"x";
    const char16_t* const utf16 = u"x";
    const auto thrown = [](const auto& in_action) { return ThrownMessage(in_action); };
    EXPECT_EQ(thrown([&] { orska_wstring(narrow, TOO_LONG); }), "ICUConvErr");
    EXPECT_EQ(thrown([&] { orska_wstring(narrow, SIZE_MAX); }), "ICUConvErr");
    EXPECT_EQ(thrown([&] { orska_wstring(wide, TOO_LONG / sizeof(wchar_t)); }), "ICUConvErr");
    EXPECT_EQ(thrown([&] { orska_wstring(wide, SIZE_MAX / 2); }), "ICUConvErr");
    EXPECT_EQ(thrown([&] { orska_wstring(utf16, TOO_LONG / 2); }), "ICUConvErr");
    EXPECT_EQ(thrown([&] { orska_wstring(u'x', TOO_LONG); }), "ICUConvErr");
    EXPECT_EQ(thrown([&] { orska_wstring().SetFromUtf8(narrow, -1); }), "ICUConvErr");
    for (const std::int32_t value : {-1, 119, 0x7FFF}) {
        const auto encoding = static_cast<EncodingType>(value);
        EXPECT_EQ(thrown([&] { orska_wstring(narrow, 1, encoding); }), "EncodingNotRecog");
        EXPECT_EQ(thrown([&] { orska_wstring(utf16).GetAsAnsiString(encoding); }),
                  "EncodingNotRecog");
    }
}

TEST(OrskaWstringTest, SetFromUtf8Replaces) {
    const struct {
        const char* m_point;
        const char* m_text;
        std::int64_t m_length;
        orska_wstring m_result;
    } cases[] = {
        {"up to the NUL", "gr\xC3\xBC\0n", orska_wstring::NUL_TERMINATED, u"gr\u00FC"},
        {"length 0", "abc", 0, u""},
        {"null, NUL-terminated", nullptr, orska_wstring::NUL_TERMINATED, u""},
        {"null with a length", nullptr, 3, u""},
        {"a NUL inside", "a\0b", 3, {u"a\0b", 3}},
        {"a sequence cut by the length", "a\xE2\x82\xAC", 3, u"a\uFFFD"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_point);
        orska_wstring string(u"before");
        EXPECT_EQ(string.SetFromUtf8(row.m_text, row.m_length), row.m_result);
    }
    orska_wstring string;
    EXPECT_EQ(string.SetFromUtf8(std::string("\xC3\xBC\0", 3)), orska_wstring(u"\u00FC\0", 2));
}

TEST(OrskaWstringTest, NarrowTextIsInTheAnsiEncoding) {
    EXPECT_EQ(GetAnsiEncoding(), EncodingType::ENC_UTF8);
    SetAnsiEncoding(EncodingType::ENC_CP1252);
    const orska_wstring euro(u"\u20AC");
    EXPECT_EQ(orska_wstring("\x80"), euro);
    EXPECT_EQ(orska_wstring("\x80!", 1), euro);
    EXPECT_EQ(orska_wstring(std::string("\x80")), euro);
    EXPECT_EQ(orska_wstring() = std::string("\x80"), euro);
    EXPECT_EQ(euro.GetAsAnsiString(), "\x80");
    EXPECT_EQ(orska_wstring().SetFromUtf8("\xE2\x82\xAC"), euro);
    EXPECT_EQ(euro.GetAsUtf8(), "\xE2\x82\xAC");
    SetAnsiEncoding(EncodingType::ENC_UTF8);
}

TEST(OrskaWstringTest, AssignmentReusesTheTextObject) {
    const orska_wstring source(u"source text that is longer than a short one");
    orska_wstring target;
    target = source;
    EXPECT_EQ(target, source);
    EXPECT_NE(target.GetView().data(), source.GetView().data());
    const icu::UnicodeString* const object = target.GetImpl();
    target = orska_wstring(u"other").Trim();
    EXPECT_EQ(target, orska_wstring(u"other"));
    EXPECT_EQ(target.GetImpl(), object);
    const orska_wstring& self = target;
    target = self;
    EXPECT_EQ(target, orska_wstring(u"other"));
    target = NULL_STRING;
    EXPECT_TRUE(target.IsNull());
    target = self;
    EXPECT_TRUE(target.IsNull());
}

TEST(OrskaWstringTest, SetImplTakesTheObject) {
    orska_wstring string(u"before");
    auto* const object = new icu::UnicodeString(u"text");
    string.SetImpl(object);
    EXPECT_EQ(string.GetImpl(), object);
    string.SetImpl(object);
    EXPECT_EQ(string, orska_wstring(u"text"));
    string.SetImpl(nullptr);
    EXPECT_TRUE(string.IsNull());
}

TEST(OrskaWstringTest, NullAddsNothing) {
    const orska_wstring abc(u"abc");
    EXPECT_EQ(NULL_STRING + abc, abc);
    EXPECT_EQ(abc + NULL_STRING, abc);
    EXPECT_TRUE((NULL_STRING + NULL_STRING).IsNull());
    EXPECT_FALSE((NULL_STRING + u"").IsNull());
    EXPECT_EQ(abc + std::string("d") + "e" + L"f", orska_wstring(u"abcdef"));
    EXPECT_EQ("d" + abc, orska_wstring(u"dabc"));
    orska_wstring twice(u"a text that does not fit into the object");
    twice += twice;
    EXPECT_EQ(twice, orska_wstring(u"a text that does not fit into the object"
                                   u"a text that does not fit into the object"));
}

TEST(OrskaWstringTest, OrdersByCodeUnitsWithNullFirst) {
    // U+FF5E is above the surrogates of U+1F600 as a unit and below it as a code point.
    const orska_wstring ordered[] = {{},   u"",       u"A",          u"AB",
                                     u"a", u"\u00E4", u"\U0001F600", u"\uFF5E"};
    for (std::size_t left = 0; left < std::size(ordered); ++left) {
        for (std::size_t right = 0; right < std::size(ordered); ++right) {
            SCOPED_TRACE(testing::PrintToString(ordered[left]) + " and " +
                         testing::PrintToString(ordered[right]));
            EXPECT_EQ(ordered[left] == ordered[right], left == right);
            EXPECT_EQ(ordered[left] != ordered[right], left != right);
            EXPECT_EQ(ordered[left] < ordered[right], left < right);
            const int compared = ordered[left].Compare(ordered[right]);
            EXPECT_EQ(compared < 0, left < right);
            EXPECT_EQ(compared > 0, left > right);
        }
    }
}

TEST(OrskaWstringTest, Compares) {
    const auto sign = [](int in_value) { return (in_value > 0) - (in_value < 0); };
    const struct {
        orska_wstring m_left;
        orska_wstring m_right;
        int m_sensitive;
        int m_insensitive;
    } cases[] = {
        {{}, {}, 0, 0},
        {{}, u"a", -1, -1},
        {u"a", {}, 1, 1},
        {{}, u"", -1, -1},
        {u"abc", u"ABC", 1, 0},
        {u"\u00C4", u"\u00E4", -1, 0},
        {u"STRASSE", u"stra\u00DFe", -1, 0},
        {u"a", u"B", 1, -1},
        {u"I", u"\u0131", -1, -1},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.m_left) + " and " +
                     testing::PrintToString(row.m_right));
        EXPECT_EQ(sign(row.m_left.Compare(row.m_right)), row.m_sensitive);
        EXPECT_EQ(sign(row.m_left.Compare(row.m_right, false)), row.m_insensitive);
        EXPECT_EQ(sign(row.m_left.ComparePrefix(row.m_right, 50)), row.m_sensitive);
        EXPECT_EQ(sign(row.m_left.CompareRange(0, 50, row.m_right, false)), row.m_insensitive);
    }
    const orska_wstring text(u"Server=x");
    EXPECT_EQ(text.ComparePrefix(u"Server!", 6), 0);
    EXPECT_NE(text.ComparePrefix(u"Server!", 7), 0);
    EXPECT_EQ(text.ComparePrefix(u"SERVER!", 6, false), 0);
    EXPECT_NE(text.ComparePrefix(u"Ser", 6), 0);
    EXPECT_EQ(text.ComparePrefix(u"other", -1), 0);
    EXPECT_EQ(text.CompareRange(3, 3, u"ver"), 0);
    EXPECT_EQ(text.CompareRange(3, 3, u"VER", false), 0);
    EXPECT_NE(text.CompareRange(3, 4, u"ver"), 0);
    EXPECT_EQ(text.CompareRange(7, 99, u"x"), 0);
    EXPECT_EQ(text.CompareRange(99, 1, u""), 0);
}

TEST(OrskaWstringTest, Finds) {
    const orska_wstring text(u"abcabc\U0001F600=;");
    EXPECT_EQ(text.IndexOf(u"bc"), 1);
    EXPECT_EQ(text.IndexOf(u"bc", 2), 4);
    EXPECT_EQ(text.IndexOf(u"bc", 5), -1);
    EXPECT_EQ(text.IndexOf(u"a", -7), 0);
    EXPECT_EQ(text.IndexOf(u"a", 99), -1);
    EXPECT_EQ(text.LastIndexOf(u"bc"), 4);
    EXPECT_EQ(text.LastIndexOf(u"x"), -1);
    EXPECT_EQ(text.IndexOfCodePoint(U'c', 3), 5);
    EXPECT_EQ(text.IndexOfCodePoint(U'\U0001F600'), 6);
    EXPECT_TRUE(text.StartsWith(u"abca"));
    EXPECT_TRUE(text.StartsWith(u""));
    EXPECT_FALSE(text.StartsWith(u"b"));
    EXPECT_EQ(text.IndexOfAny(u";="), 8);
    EXPECT_EQ(text.IndexOfAny(u"ca", 1), 2);
    EXPECT_EQ(text.IndexOfAny(u"a", -1), 0);
    EXPECT_EQ(text.IndexOfAny(u"a", 99), -1);
    EXPECT_EQ(text.IndexOfAny(u""), -1);
    EXPECT_EQ(text.IndexOfAny({char16_t{0xDE00}, 1}), 7);
    EXPECT_EQ(text.CharAt(0), U'a');
    EXPECT_EQ(text.CharAt(6), U'\U0001F600');
    EXPECT_EQ(text.CharAt(7), U'\U0001F600');
    EXPECT_EQ(text.CharAt(10), 0xFFFFu);
    EXPECT_EQ(text.CharAt(-1), 0xFFFFu);
}

TEST(OrskaWstringTest, NullFindsAndIsFoundNowhere) {
    const orska_wstring text(u"abc");
    for (const auto& [left, right] : {std::pair(NULL_STRING, text), std::pair(text, NULL_STRING),
                                      std::pair(NULL_STRING, NULL_STRING)}) {
        EXPECT_EQ(left.IndexOf(right), -1);
        EXPECT_EQ(left.LastIndexOf(right), -1);
        EXPECT_EQ(left.IndexOfAny(right), -1);
        EXPECT_FALSE(left.StartsWith(right));
    }
    EXPECT_EQ(NULL_STRING.IndexOfCodePoint(U'a'), -1);
    EXPECT_EQ(NULL_STRING.CharAt(0), 0xFFFFu);
    EXPECT_EQ(NULL_STRING.GetView(), u"");
}

TEST(OrskaWstringTest, Replaces) {
    const struct {
        orska_wstring m_text, m_old, m_new, m_result;
    } cases[] = {
        {u"a-b-c", u"-", u"+++", u"a+++b+++c"},
        {u"aaa", u"aa", u"a", u"aa"},
        {u"a-b", u"-", {}, u"ab"},
        {u"a-b", {}, u"x", u"a-b"},
        {u"a-b", u"", u"x", u"a-b"},
        {{}, u"a", u"x", {}},
    };
    for (const auto& row : cases) {
        orska_wstring text = row.m_text;
        EXPECT_EQ(text.FindAndReplace(row.m_old, row.m_new), row.m_result);
    }
}

TEST(OrskaWstringTest, PadsAndReportsAChange) {
    orska_wstring text(u"ab");
    EXPECT_TRUE(text.PadTrailing(4, u'.'));
    EXPECT_EQ(text, orska_wstring(u"ab.."));
    EXPECT_FALSE(text.PadTrailing(4));
    EXPECT_FALSE(text.PadTrailing(-1));
    EXPECT_EQ(text, orska_wstring(u"ab.."));
    orska_wstring null;
    EXPECT_FALSE(null.PadTrailing(3));
    EXPECT_TRUE(null.IsNull());
}

TEST(OrskaWstringTest, CutsTrimsAndChangesCase) {
    EXPECT_EQ(orska_wstring(u"key=a=b").TruncateAt(u'='), orska_wstring(u"key"));
    EXPECT_EQ(orska_wstring(u"=").TruncateAt(u'='), orska_wstring(u""));
    EXPECT_EQ(orska_wstring(u"key").TruncateAt(u'='), orska_wstring(u"key"));
    EXPECT_EQ(orska_wstring(u" \t\r\n\u3000 a b \u2003\n").Trim(), orska_wstring(u"a b"));
    EXPECT_EQ(orska_wstring(u" \t").Trim(), orska_wstring(u""));
    EXPECT_EQ(orska_wstring(u"stra\u00DFe \u00E4i").ToUpper(), orska_wstring(u"STRASSE \u00C4I"));
    EXPECT_EQ(orska_wstring(u"\u00C4I \u0395\u03A3").ToLower(),
              orska_wstring(u"\u00E4i \u03B5\u03C2"));
    EXPECT_EQ(orska_wstring(u"abcdef").Substring(2, 3), orska_wstring(u"cde"));
    EXPECT_EQ(orska_wstring(u"abcdef").Substring(-2), orska_wstring(u"abcdef"));
    EXPECT_EQ(orska_wstring(u"abcdef").Substring(4, 99), orska_wstring(u"ef"));
    EXPECT_EQ(orska_wstring(u"abcdef").Substring(99), orska_wstring(u""));
    EXPECT_EQ(orska_wstring(u"abcdef").Substring(1, -1), orska_wstring(u""));
    orska_wstring null;
    EXPECT_TRUE(null.TruncateAt(u'=').Trim().ToUpper().ToLower().Substring(0).IsNull());
    EXPECT_TRUE(null.IsNull());
}

TEST(OrskaWstringTest, CaseDoesNotDependOnTheLocale) {
    const icu::Locale before = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale("tr"), status);
    EXPECT_EQ(orska_wstring(u"DriverLocale").ToUpper(), orska_wstring(u"DRIVERLOCALE"));
    EXPECT_EQ(orska_wstring(u"INI").ToLower(), orska_wstring(u"ini"));
    icu::Locale::setDefault(before, status);
}

constexpr std::int32_t FIRST_ONLY = std::numeric_limits<std::int32_t>::min();

TEST(OrskaWstringTest, RegexReplaces) {
    const struct {
        const char* m_point;
        orska_wstring m_text, m_pattern, m_replacement;
        std::int32_t m_flags;
        orska_wstring m_result;
    } cases[] = {
        {"all", u"a1b22", u"[0-9]+", u"#", 0, u"a#b#"},
        {"the first", u"a1b22", u"[0-9]+", u"#", FIRST_ONLY, u"a#b22"},
        {"any negative flags", u"aAa", u"a", u"x", -1, u"xAa"},
        {"groups", u"key=value", u"(\\w+)=(\\w+)", u"$2=$1", 0, u"value=key"},
        {"no match", u"abc", u"x", u"y", 0, u"abc"},
        {"case counts", u"ABC", u"b", u"x", 0, u"ABC"},
        {"case-insensitive", u"ABC", u"b", u"x", 2, u"AxC"},
        {"case-insensitive, the first", u"bBb", u"B", u"x", FIRST_ONLY | 2, u"xBb"},
        {"comments", u"abc", u"b # a comment", u"x", 4, u"axc"},
        {"multi-line", u"a\na", u"^a", u"x", 8, u"x\nx"},
        {"one line", u"a\na", u"^a", u"x", 0, u"x\na"},
        {"dot matches all", u"a\nb", u"a.b", u"x", 32, u"x"},
        {"dot stops at a line end", u"a\nb", u"a.b", u"x", 0, u"a\nb"},
        {"literal is not passed on", u"a.c abc", u"a.c", u"x", 16, u"x x"},
        {"bit 0 is not passed on", u"abc", u"B", u"x", 1, u"abc"},
        {"high bits are not passed on", u"abc", u"b", u"x", 0x7FFFFFC0, u"axc"},
        {"an empty string", u"", u"^", u"x", 0, u"x"},
        {"NULL", {}, u"^", u"x", 0, {}},
        {"a NULL replacement", u"abc", u"b", {}, 0, u"ac"},
        {"a NULL pattern", u"ab", {}, u"-", 0, u"-a-b-"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_point);
        orska_wstring text = row.m_text;
        EXPECT_EQ(text.RegexReplace(row.m_pattern, row.m_replacement, row.m_flags), row.m_result);
        EXPECT_EQ(text, row.m_result);
    }
}

TEST(OrskaWstringTest, AFailedRegexReplaceLeavesTheString) {
    const struct {
        orska_wstring m_pattern, m_replacement;
    } cases[] = {{u"[", u"x"}, {u"(", u"x"}, {u"b", u"$9"}, {u"b", u"${none}"}};
    for (const auto& row : cases) {
        for (const std::int32_t flags : {0, FIRST_ONLY}) {
            orska_wstring text(u"abc");
            EXPECT_EQ(
                ThrownMessage([&] { text.RegexReplace(row.m_pattern, row.m_replacement, flags); }),
                "ICURegexError(" + row.m_pattern.GetAsUtf8() + ")");
            EXPECT_EQ(text, orska_wstring(u"abc"));
        }
    }
    orska_wstring null;
    const TraceCapture capture;
    EXPECT_EQ(ThrownMessage([&] { null.RegexReplace(u"[", u"x"); }), "ICURegexError([)");
    EXPECT_EQ(capture.GetText(),
              "`anonymous-namespace'::CheckForICUError:0\t"
              "ICURegexError = U_REGEX_MISSING_CLOSE_BRACKET orska_wstring\n"
              "`anonymous-namespace'::CheckForICUError:0\t"
              "Throwing: ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L\"ICURegexError\", "
              "msgParams) orska_wstring\n");
}

}  // namespace
}  // namespace Orska::Support
