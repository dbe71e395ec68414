#include "Setup/OdbcIniText.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace Veltrane::ODBC {
namespace {

using Edit = std::function<void(OdbcIniText&)>;

/// Edits as a save of a data source does: removes its section and adds it with other values.
void Save(OdbcIniText& io_text) {
    io_text.RemoveSection("Sales");
    io_text.AddSection("Sales");
    io_text.Set("Sales", "Driver", "V");
    io_text.Set("Sales", "Server", "new");
    io_text.Set("Sales", "Database", "d");
}

void Remove(OdbcIniText& io_text) { io_text.RemoveSection("Sales"); }

void RemoveTwice(OdbcIniText& io_text) {
    Remove(io_text);
    Remove(io_text);
}

struct EditCase {
    const char* m_point;
    Edit m_edit;
    std::string m_before;
    std::string m_after;
    OdbcIniLine::Rules m_rules = OdbcIniLine::Rules::FIRST_FILE;
};

const EditCase EDIT_CASES[] = {
    {"into an empty file", Save, "", "[Sales]\nDriver=V\nServer=new\nDatabase=d\n\n"},
    {"after a blank line, in the file's style", Save, "[A]\nk=v\n\n",
     "[A]\nk=v\n\n[Sales]\nDriver=V\nServer=new\nDatabase=d\n\n"},
    {"after a section without a blank line", Save, "[A]\nk=v\n",
     "[A]\nk=v\n\n[Sales]\nDriver=V\nServer=new\nDatabase=d\n"},
    {"after a last line without an end", Save, "# only a comment",
     "# only a comment\n\n[Sales]\nDriver=V\nServer=new\nDatabase=d\n"},
    {"with the file's line ends", Save, "[A]\r\nk=v\r\n",
     "[A]\r\nk=v\r\n\r\n[Sales]\r\nDriver=V\r\nServer=new\r\nDatabase=d\r\n"},
    {"without a byte order mark", Save, "\xEF\xBB\xBF[A]\n\n",
     "[A]\n\n[Sales]\nDriver=V\nServer=new\nDatabase=d\n\n"},
    {"at its old place, comments and keys too", Save,
     "; top\n[A]\nk = v \n\n[ SALES ] tail\n# one\n  server = old\nOther=x\n; two\nDriver=W\n# "
     "b\n\n[B]\n",
     "; top\n[A]\nk = v \n\n[Sales]\n# one\nServer=new\n; two\nDriver=V\nDatabase=d\n# b\n\n[B]\n"},
    {"once, when it stood twice", Save, "[Sales]\nServer=1\n\n[A]\nk=v\n[sales]\nServer=2\n# c\n",
     "[Sales]\nDriver=V\nServer=new\nDatabase=d\n\n[A]\nk=v\n# c\n"},
    {"keys that occur twice are removed", Save, "[Sales]\nServer=1\nServer=2\n",
     "[Sales]\nDriver=V\nServer=new\nDatabase=d\n"},
    {"a line over 999 bytes is removed whole", Save,
     "[Sales]\nServer=" + std::string(2000, 'x') + "\n# c\n[B]\n",
     "[Sales]\nDriver=V\nServer=new\nDatabase=d\n# c\n[B]\n"},
    {"a comment over 999 bytes stays one", RemoveTwice,
     "[A]\n[Sales]\n#" + std::string(995, 'c') + "ü" + std::string(999, 'c') + "\n#" +
         std::string(998, 'd') + "\n[B]\n",
     "[A]\n#" + std::string(995, 'c') + "\n# ü" + std::string(995, 'c') + "\n# cccc\n#" +
         std::string(998, 'd') + "\n[B]\n"},
    {"the first header begins in the first column", Remove, "[Sales]\nk=v\n# c\n \t[B]\nk=v\n",
     "# c\n[B]\nk=v\n"},
    {"the second of two removed ones returns to its place",
     [](OdbcIniText& io_text) {
         io_text.RemoveSection("A");
         Remove(io_text);
         io_text.Set("Sales", "k", "w");
     },
     "[A]\nk=v\n# a\n[B]\n[Sales]\nk=v\n# s\n[C]\n", "# a\n[B]\n[Sales]\nk=w\n# s\n[C]\n"},
    {"nothing else is changed, not even NUL and high bytes", Save,
     std::string("[A]\n\0\x80\xFF=1\r\n\v\n[Sales]\n[B]\nx", 26),
     std::string("[A]\n\0\x80\xFF=1\r\n\v\n", 13) +
         "[Sales]\nDriver=V\nServer=new\nDatabase=d\n[B]\nx"},
    {"removing from the middle", Remove, "[A]\nk=v\n\n[Sales]\nk=v\n\n[B]\nk=v\n",
     "[A]\nk=v\n\n[B]\nk=v\n"},
    {"removing keeps comments", Remove, "[A]\n[Sales]\n# mine\nk=v\n# of B\n[B]\n",
     "[A]\n# mine\n# of B\n[B]\n"},
    {"removing the only one", Remove, "[Sales]\nk=v\n", ""},
    {"removing a missing section", Remove, "[A]\n\n\n", "[A]\n\n\n"},
    {"removing a header that the reader sees inside a long line", Remove,
     "[A]\n" + std::string(999, 'x') + "[Sales]\nk=v\n[B]\n",
     "[A]\n" + std::string(999, 'x') + "\n[B]\n"},
    {"writing one key", [](OdbcIniText& io_text) { io_text.Set("A", "K", "w"); },
     "[a]\n# c\n k = v # d\nl=1\n", "[a]\n# c\nK=w\nl=1\n"},
    {"writing a new key", [](OdbcIniText& io_text) { io_text.Set("A", "n", "w"); },
     "[A]\nk=v\n\n# of B\n[B]\n", "[A]\nk=v\nn=w\n\n# of B\n[B]\n"},
    {"removing a key that occurs twice", [](OdbcIniText& io_text) { io_text.RemoveKey("A", "k"); },
     "[A]\nK=1\nl=1\n k =2", "[A]\nl=1\n"},
    {"lines that only iODBC sees", [](OdbcIniText& io_text) { io_text.Set("A", "k", "w"); },
     "[A]\rk=v\rl=1\x1A[B]\r", "[A]\rk=w\nl=1\x1A[B]\r", OdbcIniLine::Rules::IODBC},
    {"blanks that iODBC reads at the end of the file",
     [](OdbcIniText& io_text) {
         Save(io_text);
         for (int i = 0; i < 70; ++i) io_text.Set("B", "n" + std::to_string(i), "w");
         for (int i = 1; i < 70; ++i) io_text.RemoveKey("B", "n" + std::to_string(i));
         io_text.Set("B", "k", *io_text.Get("B", "k"));
     },
     "[A]\n[B]\nk=v ", "[A]\n\n[Sales]\nDriver=V\nServer=new\nDatabase=d\n[B]\nn0=w\nk=v ",
     OdbcIniLine::Rules::IODBC},
};

TEST(OdbcIniText, EditsOnlyTheGivenLines) {
    for (const EditCase& row : EDIT_CASES) {
        SCOPED_TRACE(row.m_point);
        OdbcIniText text(row.m_before, row.m_rules);
        ASSERT_TRUE(text.IsReadable());
        row.m_edit(text);
        text.Finish();
        EXPECT_EQ(text.GetBytes(), row.m_after);
    }
}

std::string Numbered(const char* in_form, int in_from, int in_to) {
    std::string text;
    for (int i = in_from; i < in_to; ++i) {
        for (const char* at = in_form; *at != '\0'; ++at) {
            text += *at == '%' ? std::to_string(i) : std::string(1, *at);
        }
    }
    return text;
}

// More edits before one Finish than a request makes: many sections and keys are in tables.
TEST(OdbcIniText, MakesManyEditsAtOnce) {
    constexpr int COUNT = 300;
    const std::string list = "[ODBC Data Sources]\n" + Numbered("S%=V\n", 0, COUNT) + "# end\n\n";
    OdbcIniText text(list + "[Gone]\n# first\n" + Numbered("[S%]\nk=%\n\n", 0, COUNT) +
                     Numbered("[Gone]\nx=%\n", 0, COUNT));
    text.RemoveSection("gone");
    for (int i = 0; i < COUNT; ++i) {
        const std::string name = "s" + std::to_string(i);
        if (i % 2 == 0) {
            text.RemoveSection(name);
            text.RemoveKey("ODBC Data Sources", name);
        } else {
            text.Set(name, "K", "new");
        }
        text.Set("ODBC Data Sources", "N" + std::to_string(i), "V");
        text.Set("N" + std::to_string(i), "k", "v");
        EXPECT_EQ(text.Get("n" + std::to_string(i), "K"), "v");
        EXPECT_EQ(text.HasSection(name), i % 2 != 0);
    }
    text.Set("gone", "x", "back");
    text.Finish();
    std::string after = "[ODBC Data Sources]\n";
    for (int i = 1; i < COUNT; i += 2) after += Numbered("S%=V\n", i, i + 1);
    after += Numbered("N%=V\n", 0, COUNT) + "# end\n\n[gone]\nx=back\n# first\n\n";
    for (int i = 1; i < COUNT; i += 2) after += Numbered("[S%]\nK=new\n\n", i, i + 1);
    EXPECT_EQ(text.GetBytes(),
              after + Numbered("[N%]\nk=v\n", 0, 1) + "\n" + Numbered("[N%]\nk=v\n\n", 1, COUNT));
}

TEST(OdbcIniText, KnowsWhatALineCanHold) {
    const std::string longest(OdbcIniLine::MAX_LINE - 2, 'x');
    for (const std::string& value : {std::string(), std::string("p=;#'\"{}[]\\%$ ü€日本😀"), longest,
                                     std::string("\xC2\xA0")}) {
        EXPECT_TRUE(OdbcIniLine::IsCarriableLine("k", value)) << value;
    }
    for (const std::string& value :
         {longest + "x", std::string(" v"), std::string("v "), std::string("a\nb"),
          std::string("a\rb"), std::string("a\vb"), std::string("a\tb"), std::string("a\0b", 3),
          std::string("\x7F"), std::string("a\xC2\x85"), std::string("\x1B")}) {
        EXPECT_FALSE(OdbcIniLine::IsCarriableLine("k", value)) << value;
        EXPECT_FALSE(OdbcIniLine::IsCarriableSection(value + "]")) << value;
    }
    for (const char* key : {"", " k", "k ", "#k", ";k", "[k", "a=b", "a\nb"}) {
        EXPECT_FALSE(OdbcIniLine::IsCarriableLine(key, "v")) << key;
    }
    EXPECT_TRUE(OdbcIniLine::IsCarriableSection(std::string(OdbcIniLine::MAX_LINE - 2, 'x')));
    EXPECT_FALSE(OdbcIniLine::IsCarriableSection(std::string(OdbcIniLine::MAX_LINE - 1, 'x')));
    EXPECT_FALSE(OdbcIniLine::IsCarriableSection("a]b"));
}

TEST(OdbcIniText, ListsSectionsAndTheLinesOfOne) {
    const OdbcIniText text("# c\n\n[ A ]\nk = v ; w\n# x=1\n\nk=2\nalone\n [B]\n[a]\ny=z");
    EXPECT_EQ(text.GetSections(), (std::vector<std::string>{"A", "B", "a"}));
    const std::vector<OdbcIniText::KeyValue> lines{{"k", "v ; w"}, {"k", "2"}, {"alone", ""}};
    EXPECT_EQ(text.GetKeyValues("a"), lines);
    EXPECT_TRUE(text.GetKeyValues("b").empty());
    EXPECT_TRUE(text.GetKeyValues("c").empty());
    EXPECT_TRUE(OdbcIniText("k=v\n[A]\n").GetSections().empty());
}

// A search must not read the same bytes again for each bracket.
TEST(OdbcIniText, SearchesALineOfBracketsOnce) {
    std::string bytes = "[A]\nk=1\n";
    bytes.append(std::size_t{4} << 20, '[').append("\n[B]\nk=2\n");
    const OdbcIniText text(bytes);
    EXPECT_EQ(text.Get("B", "k"), "2");
}

}  // namespace
}  // namespace Veltrane::ODBC
