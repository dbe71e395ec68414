#include "cli/dsn/ConnectionString.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {
namespace {

std::string Spell(const Entries& in_entries) {
    std::string text;
    for (const auto& [key, value] : in_entries) text += key + "<" + value + ">";
    return text;
}

TEST(ConnectionString, Takes) {
    const struct {
        const char* m_point;
        const char* m_text;
        const char* m_entries;
    } cases[] = {
        {"nothing", " ; ;", ""},
        {"plain entries", "Server=a;UID=b", "Server<a>UID<b>"},
        {"blanks that do not count", " Server = a b ; UID=\tb ;", "Server<a b>UID<b>"},
        {"an empty value", "UID=;Server=s", "UID<>Server<s>"},
        {"a value with =", "Server=a=b", "Server<a=b>"},
        {"separators in braces", "Database={a;b=c};UID=u", "Database<a;b=c>UID<u>"},
        {"doubled braces", "Database={a}}b}}};UID=u", "Database<a}b}>UID<u>"},
        {"blanks in braces and behind", "Database={ a } ;UID=u", "Database< a >UID<u>"},
        {"an opening brace inside", "Database={a{b};UID=x{y}", "Database<a{b>UID<x{y}>"},
        {"empty braces", "UID={}", "UID<>"},
        {"the first of two", "uid=a;UID=b", "uid<a>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        EXPECT_EQ(Spell(ParseConnectionString(c.m_text)), c.m_entries);
    }
}

TEST(ConnectionString, RefusesWithThePlaceAndWithoutTheValue) {
    const struct {
        const char* m_text;
        const char* m_place;
    } cases[] = {
        {"Server=a;secret", "byte 10"},
        {"Server=a;secret;UID=b", "byte 10"},
        {"=secret", "byte 1"},
        {"PWD={secret;UID=x", "byte 5"},
        {"PWD={secret} x;UID=x", "byte 14"},
        {"PWD={secret}}", "byte 5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_text);
        try {
            ParseConnectionString(c.m_text);
            ADD_FAILURE() << "accepted";
        } catch (const CommandError& error) {
            EXPECT_EQ(error.GetExitCode(), EXIT_USAGE);
            EXPECT_NE(std::string(error.what()).find(c.m_place), std::string::npos) << error.what();
            EXPECT_EQ(std::string(error.what()).find("secret"), std::string::npos) << error.what();
        }
    }
}

}  // namespace
}  // namespace Veltrane::Cli
