#include "VeltraneDialog/FieldRules.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace Veltrane::ODBC {
namespace {

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
        {"32 bytes of 16 letters", "üüüüüüüüüüüüüüüü", ""},
        {"inner blank, quotes, # and :", "a b'\"#:<>|/", ""},
        {"blank in front", " a", blanks},
        {"blank at the end", "a ", blanks},
        {"ideographic space at the end", "日本\xE3\x80\x80", blanks},
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
        {"the same in another case", "odbc data sources", "This name is reserved."},
        {"longer than that", "ODBC Data Sources 2", ""},
    };
    for (const auto& [point, name, reason] : cases) {
        SCOPED_TRACE(point);
        EXPECT_EQ(Reason("DSN", name), reason);
    }
    for (const char c : std::string("[]{}(),;?*=!@\\")) {
        EXPECT_EQ(Reason("DSN", std::string("a") + c),
                  "A name has none of [ ] { } ( ) , ; ? * = ! @ \\");
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

TEST(DialogFields, AcceleratorsAndOrderAreUnique) {
    std::set<char> letters;
    const char* others[] = {TEXT_SHOW_PASSWORD, TEXT_OK, TEXT_CANCEL};
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
