#include "VeltraneDialog/FieldRules.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "VeltraneDialog/Utf8.h"

namespace Veltrane::ODBC {
namespace {

constexpr bool ARE_NAMES_COUNTED_IN_UTF16 = sizeof(wchar_t) == sizeof(char16_t);  // Windows
const std::string MAX_NAME_REASON =
    ARE_NAMES_COUNTED_IN_UTF16
        ? "Too long: a name has at most 32 characters."
        : "Too long: a name has at most 32 bytes; some letters take several.";

const DialogField& Field(std::string_view in_key) {
    for (const DialogField& field : DIALOG_FIELDS) {
        if (field.m_key == in_key) {
            return field;
        }
    }
    throw std::logic_error("no such field");
}

std::string Reason(std::string_view in_key, const std::string& in_text) {
    const char* const reason = WhyRefused(Field(in_key), in_text);
    return reason != nullptr ? reason : "";
}

TEST(FieldRules, Names) {
    const std::string control = "Line ends, tabs and other control characters cannot be stored.";
    const std::string blanks = "Blanks at the beginning or the end cannot be stored.";
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"empty", "", "Has to be filled."},
        {"one letter", "a", ""},
        {"32 bytes", std::string(32, 'a'), ""},
        {"33 bytes", std::string(33, 'a'), MAX_NAME_REASON},
        {"32 bytes of 16 letters", "üüüüüüüüüüüüüüüü", ""},
        {"33 bytes of 17 letters", "üüüüüüüüüüüüüüüüx",
         ARE_NAMES_COUNTED_IN_UTF16 ? "" : MAX_NAME_REASON},
        {"inner blank, quotes, # and :", "a b'\"#:<>|/", ""},
        {"blank at the start", " a", blanks},
        {"blank at the end", "a ", blanks},
        {"no-break space at the end", "a\xC2\xA0", ""},
        {"line feed", "a\nb", control},
        {"tab", "a\tb", control},
        {"delete", "a\x7F", control},
        {"next line",
         "a\xC2\x85"
         "b",
         control},
        {"NUL", std::string("a\0b", 3), control},
        {"not UTF-8", "a\xFF", "Not UTF-8 text."},
        {"the list of the manager", "ODBC Data Sources", "This name is reserved."},
        {"longer than that", "ODBC Data Sources 2", ""},
        {"the manager's settings", "ODBC", "This name is reserved."},
        {"the same in another case", "oDbC", "This name is reserved."},
        {"longer than that", "ODBC2", ""},
    };
    for (const auto& [point, name, reason] : cases) {
        SCOPED_TRACE(point);
        EXPECT_EQ(Reason("DSN", name), reason);
    }
    for (const char c : std::string("[]{}(),;?*=!@\\")) {
        EXPECT_EQ(Reason("DSN", std::string("a") + c),
                  "A name cannot contain [ ] { } ( ) , ; ? * = ! @ \\");
        EXPECT_EQ(Reason("UID", std::string("a") + c), "");
    }
}

TEST(FieldRules, ValuesHaveNoControlCharactersAndNoBlanksAtTheirEnds) {
    for (const DialogField& field : DIALOG_FIELDS) {
        SCOPED_TRACE(field.m_key);
        const std::string key(field.m_key);
        EXPECT_NE(Reason(key, "a\rb"), "");
        EXPECT_NE(Reason(key, "\ta"), "");
    }
    const std::u16string blanks =
        u" \x1680\x2000\x2001\x2002\x2003\x2004\x2005\x2006\x2008\x2009\x200A\x2028\x2029\x205F"
        u"\x3000";
    for (char16_t unit = 0xA0; unit < 0xD800; ++unit) {
        const bool isBlank = blanks.find(unit) != std::u16string::npos;
        EXPECT_EQ(Reason("UID", EncodeUtf8(u"a" + std::u16string(1, unit))).empty(), !isBlank)
            << int{unit};
    }
}

TEST(FieldRules, ValuesAreNotLongerThanARequestReads) {
    std::string letters;
    for (int i = 0; i < 259; ++i) letters += "日";
    std::string pairs;
    for (int i = 0; i < 129; ++i) pairs += "\U0001F600";
    for (const DialogField& field : DIALOG_FIELDS) {
        if (field.m_key == "DSN") continue;
        SCOPED_TRACE(field.m_key);
        const std::string key(field.m_key);
        EXPECT_EQ(Reason(key, letters), "");
        EXPECT_EQ(Reason(key, letters + "x"), "Too long: a value has at most 259 characters.");
        EXPECT_EQ(Reason(key, pairs + "x"), "");
        EXPECT_EQ(Reason(key, pairs + "xx"), "Too long: a value has at most 259 characters.");
    }
}

TEST(FieldRules, ALoadedValueIsValidUntilItIsChanged) {
    DialogValues loaded;
    loaded.m_dsn = u"ODBC";
    loaded.m_server = u"a\tb\x7F ";
    loaded.m_pwd = std::u16string(300, u'p');
    loaded.m_database = u"";
    const std::tuple<const char*, std::string, bool> cases[] = {
        {"Server", "a\tb\x7F ", true},
        {"Server", "a\tb\x7F", false},
        {"PWD", std::string(300, 'p'), true},
        {"PWD", std::string(299, 'p'), false},
        {"UID", "", true},
        {"Database", "", false},
        {"DSN", "ODBC", false},
    };
    for (const auto& [key, text, isTaken] : cases) {
        SCOPED_TRACE(key + (" " + text));
        EXPECT_EQ(WhyRefused(Field(key), text, loaded) == nullptr, isTaken);
    }
}

TEST(FieldRules, OnlyNameServerAndDatabaseHaveToBeFilled) {
    std::set<std::string_view> required;
    for (const DialogField& field : DIALOG_FIELDS) {
        EXPECT_EQ(WhyRefused(field, "") != nullptr, IsOnlyMissing(field, ""));
        EXPECT_FALSE(IsOnlyMissing(field, " "));
        if (field.m_isRequired) {
            required.insert(field.m_key);
        }
    }
    EXPECT_EQ(required, (std::set<std::string_view>{"DSN", "Database", "Server"}));
}

TEST(Utf8, LoneSurrogatesAreReplaced) {
    const char16_t surrogates[] = {0xDE00, 0xD83D, u'a', 0xD83D};
    EXPECT_EQ(EncodeUtf8({surrogates, 4}), "\uFFFD\uFFFDa\uFFFD");
}

TEST(DialogFields, AcceleratorsAndOrderAreUnique) {
    std::set<char> letters;
    const char* others[] = {TEXT_SHOW_PASSWORD, TEXT_OK, TEXT_CANCEL, TEXT_TEST};
    std::string all;
    for (const DialogField& field : DIALOG_FIELDS) {
        all += field.m_label;
    }
    for (const char* text : others) {
        all += text;
    }
    for (std::size_t at = all.find('&'); at != std::string::npos; at = all.find('&', at + 1)) {
        EXPECT_TRUE(letters.insert(static_cast<char>(all[at + 1] | 0x20)).second) << all.substr(at);
    }
    EXPECT_EQ(letters.size(), DIALOG_FIELDS.size() + std::size(others));
    EXPECT_EQ(std::set<std::size_t>(DISPLAY_ORDER.begin(), DISPLAY_ORDER.end()).size(),
              DIALOG_FIELDS.size());
}

}  // namespace
}  // namespace Veltrane::ODBC
