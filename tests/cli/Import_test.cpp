#include "cli/dsn/Import.h"

#include <gtest/gtest.h>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {
namespace {

const std::string KEY =
    "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\Software\\ODBC"
    "\\ODBC.INI\\a]\r\n";

const ImportWish WISH{"f", "", "", "Veltrane", "", false, false};

/// The DSNs in the format of INI, then the notes.
std::string Import(const std::string& in_text, const ImportWish& in_wish = WISH) {
    std::vector<std::string> notes;
    const std::vector<DsnDescription> descriptions = ImportDsns(in_text, in_wish, notes);
    std::string text = FormatDescriptions(descriptions, DescriptionFormat::INI);
    for (const std::string& note : notes) text += note + "\n";
    return text;
}

TEST(Import, TakesWhatPeopleHave) {
    const struct {
        const char* m_point;
        std::string m_text;
        std::string m_expected;
        ImportWish m_wish = WISH;
    } cases[] = {
        {"the list names the driver where the section has a path, and one that is gone",
         "[ODBC]\nTrace=1\n[ODBC Data Sources]\na=Veltrane\nb=Other\ngone=Veltrane\n"
         "[a]\nDriver=/lib/v.so\nserver = s ; x\nPWD=hunter2\nTrace=\nUID=\n[b]\nDriver=/o.so\n"
         "[c]\nDriver=veltrane\n[d]\nServer=s\n[A]\nServer=second\n",
         "[a]\nDriver=Veltrane\nServer=s ; x\nTrace=\n\n[c]\nDriver=Veltrane\n"
         "[A] is left out: there is one of this name before it.\n"
         "\"gone\" is left out: it is listed, but has no values.\n"
         "\"b\" is left out: it is one of the driver \"Other\".\n"
         "\"d\" is left out: it has no driver.\n"
         "Passwords are left out; --show-secrets takes them, too.\n"},
        {"another name there, in latin1",
         "[a]\nDriver=V 2\nServer=B\xFCro\nPWD=p\n",
         "[a]\nDriver=V3\nServer=Büro\nPWD=p\n",
         {"f", "", "", "V3", "v 2", false, true}},
        {"all drivers, in another encoding",
         "[a]\nDriver=V\nDatabase=\x93\x8C\x8B\x9E\n[b]\nDriver=W\n",
         "[a]\nDriver=V\nDatabase=東京\n\n[b]\nDriver=W\n",
         {"f", "", "cp932", "Veltrane", "", true, false}},
        {"a file DSN",
         "[ODBC]\r\nDRIVER={Veltrane}\r\nUID=anna\r\nDatabase={a;}}b}\r\nServer=s\r\n",
         "[Sales]\nDriver=Veltrane\nUID=anna\nDatabase=a;}b\nServer=s\n",
         {"f", "Sales", "", "Veltrane", "", false, false}},
        {"strings, expandable strings, numbers, other kinds and an unknown escape",
         KEY + "@=\"own\"\r\n\"Driver\"=\"Veltrane\"\r\n\"Database\"=\"C:\\\\a \\\"b\\\" \\c\" ; "
               "x\r\n"
               "\"Server\"=hex(2):64,00,\\\r\n  fc,00,00,00\r\n\"Port\"=dword:0000001f\r\n"
               "\"Blob\"=hex:01,02\r\n\"Many\"=hex(7):61,00,00,00\r\n\"Line\"=\"x\r\ny\"\r\n"
               "; comment\r\n[-HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\z]\r\n"
               "[HKEY_CURRENT_USER\\Software\\Other]\r\n\"x\"=\"y\"\r\n"
               "[HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\a\\Sub]\r\n\"x\"=\"y\"\r\n",
         "[a]\nDriver=Veltrane\nDatabase=C:\\a \"b\" \\c\nServer=dü\nPort=31\n"
         "\"a\": Blob is left out: its value is no text.\n"
         "\"a\": Many is left out: its value is no text.\n"
         "\"a\": the key Sub in it is left out.\n"
         "\"a\": Line is left out: no line of odbc.ini can hold it unchanged.\n"},
        {"an old export, with each scope's list; the user's DSN wins",
         "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\ODBC\\ODBC.INI\\ODBC Data Sources]\n"
         "\"a\"=\"Veltrane\"\n\"b\"=\"Veltrane\"\n"
         "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ODBC\\ODBC.INI\\a]\n\"Driver\"=\"C:\\\\v.dll\"\n"
         "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ODBC\\ODBC.INI\\b]\n\"Server\"=hex(2):80,00\n"
         "[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\ODBC\\ODBC.INI\\c]\n\"Driver\"=\"Veltrane\"\n"
         "[HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\A]\n\"Driver\"=\"Veltrane\"\n",
         "[A]\nDriver=Veltrane\n\n[b]\nDriver=Veltrane\nServer=€\n"
         "\"a\" is left out: there is one of this name before it.\n"
         "\"c\" is left out: it is for programs of 32 bits.\n"},
        {"lines that the driver manager reads as well as it can",
         "[a\r\nDriver=Veltrane\r\n; x\r\nServer\r\n",
         "[a]\nDriver=Veltrane\n"
         "f, line 1 has no \"]\"; it is read as a section.\n"
         "f, line 4 has no \"=\"; it is read as a key without a value.\n"},
        {"one object of PowerShell",
         "{\"Name\": \"a\", \"DsnType\": \"User\", \"Platform\": \"32/64-bit\", \"DriverName\": "
         "\"Veltrane\", \"Attribute\": {\"Driver\": \"C:\\\\v.dll\", \"Server\": \"東京\", "
         "\"PWD\": "
         "\"\", \"Port\": 3, \"Pooled\": [1], \"X\": null}, \"CimClass\": {}}",
         "[a]\nDriver=Veltrane\nServer=東京\nPort=3\n"
         "\"a\": Pooled is left out: its value is no text.\n"},
        {"a list of them, in other forms of values",
         "{\"value\": [{\"Name\": \"a\", \"DsnType\": \"System\", \"DriverName\": \"Veltrane\", "
         "\"PropertyValue\": [\"Server=s=t\", \"UID=u\"]}, {\"Name\": \"b\", \"Platform\": "
         "\"32-bit\", \"DriverName\": \"Veltrane\"}, {\"Name\": \"c\", \"DriverName\": "
         "\"Veltrane\","
         " \"Attribute\": [{\"Key\": \"Server\", \"Value\": \"x\"}, {\"Name\": \"Trace\", "
         "\"Value\": \"1\"}]}], \"Count\": 3}",
         "[c]\nDriver=Veltrane\nServer=x\nTrace=1\n\n[a]\nDriver=Veltrane\nServer=s=t\nUID=u\n"
         "\"b\" is left out: it is for programs of 32 bits.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        EXPECT_EQ(Import(c.m_text, c.m_wish), c.m_expected);
    }
}

void ExpectRefused(const std::string& in_text, const ImportWish& in_wish, const char* in_expected) {
    SCOPED_TRACE(in_text);
    try {
        Import(in_text, in_wish);
        ADD_FAILURE() << "accepted";
    } catch (const CommandError& error) {
        EXPECT_STREQ(error.what(), in_expected);
    }
}

TEST(Import, RefusesWithThePlaceAndWithoutValues) {
    const struct {
        std::string m_text;
        const char* m_expected;
    } cases[] = {
        {" \n", "f is empty: it has no DSN."},
        {std::string("[a]\0\n", 5), "f is no text, or is UTF-16 without a byte order mark."},
        {"hunter2\n[a]\nx=y\n",
         "f is no odbc.ini, file DSN, export of the registry or JSON of Get-OdbcDsn."},
        {"# [a]\n", "f has no DSN."},
        {"[ODBC]\nPWD=hunter2\n", "f has no DSN: its section [ODBC] names no driver."},
        {"[ODBC]\nDSN=hunter2\n", "f only names a DSN of its machine; import that one."},
        {"[ODBC]\nDriver=Veltrane\n", "A file DSN holds no name: give --name."},
        {"REGEDIT4\n\"PWD\"=\"hunter2\"\n",
         "f, line 2: neither a key, a value of one nor a comment."},
        {"REGEDIT4\n[HKEY_hunter2\n", "f, line 2: a key without its closing bracket."},
        {KEY + "hunter2\n", "f, line 3: neither a key, a value of one nor a comment."},
        {KEY + "\"PWD\"=\"hunter2\n\n", "f, line 3: a text without its closing quote."},
        {KEY + "\"PWD\"=\"x\"hunter2\n", "f, line 3: text after a value."},
        {KEY + "\"PWD\" hunter2\n", "f, line 3: a name without \"=\"."},
        {KEY + "\"PWD\"=hunter2\n", "f, line 3: a value of an unknown kind."},
        {KEY + "\"PWD\"=dword:hunter2\n", "f, line 3: a dword that is no number."},
        {KEY + "\"PWD\"=hex(2):61,hunter2\n", "f, line 3: a byte that is no number."},
        {KEY + "\"PWD\"=hex(2):6161\n", "f, line 3: bytes without a comma between them."},
        {KEY + "\"PWD\"=hex(2", "f, line 3: a value of an unknown kind."},
        {"{\"hunter2\" 1}", "f, line 1, column 12: not JSON in UTF-8."},
        {"[{\"Name\": 1}]", "f: entry 1 has \"Name\", which is not a text."},
        {"{\"x\": \"hunter2\"}", "f: entry 1 has no \"Name\"."},
        {"[{\"Name\": \"a\"}, \"hunter2\"]", "f: entry 2 is not an object."},
        {"{\"Name\": \"a\", \"Attribute\": \"hunter2\"}",
         "f: entry 1 has \"Attribute\" cut short; write it by ConvertTo-Json -Depth 4."},
        {"{\"Name\": \"a\", \"PropertyValue\": [\"hunter2\"]}",
         "f: entry 1 has \"PropertyValue\" with a key that has no value."},
        {"[{\"name\": \"a\"}]", "f is a description already: apply takes it."},
        {"{\"data_sources\": []}", "f is a description already: apply takes it."},
    };
    for (const auto& c : cases) ExpectRefused(c.m_text, WISH, c.m_expected);
    const struct {
        const char* m_text;
        ImportWish m_wish;
        const char* m_expected;
    } wishes[] = {
        {"[a]\nx=\xFF\n",
         {"f", "", "no-such", "V", "", false, false},
         "--encoding names an encoding that is not known."},
        {"[a]\nx=\xFF\n",
         {"f", "", "utf-8", "V", "", false, false},
         "f has bytes that are no text in its encoding."},
        {"[a]\nx=y\n",
         {"f", "b", "", "V", "", false, false, true},
         "--name is for a file DSN; f has the names of its DSNs."},
    };
    for (const auto& c : wishes) ExpectRefused(c.m_text, c.m_wish, c.m_expected);
}

}  // namespace
}  // namespace Veltrane::Cli
