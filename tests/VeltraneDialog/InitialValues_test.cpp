#include "VeltraneDialog/InitialValues.h"

#include "VeltraneDialog/VeltraneDSNDialog.h"
#include "tests/VeltraneDialog/InitialValuesFile.h"

namespace Veltrane::ODBC {
namespace {

struct Case {
    const char* m_point;
    std::string m_contents;
    std::u16string m_dsn;
    std::u16string m_server;
    std::u16string m_pwd;
};

TEST(InitialValues, ReadsTheKeysOfTheDsnSection) {
    const Case cases[] = {
        {"empty file", "", u"", u"", u""},
        {"plain", "[DSN]\nDSN=a\nServer=s\nPWD=p\n", u"a", u"s", u"p"},
        {"no final newline, CRLF", "[DSN]\r\nDSN=a\r\nServer=s\r\nPWD=p", u"a", u"s", u"p"},
        {"byte order mark", "\xEF\xBB\xBF[DSN]\nDSN=a\n", u"a", u"", u""},
        {"case and blanks around section, key, value", " [ dsn ]\n dsn =  a b \t\nSERVER=s\n",
         u"a b", u"s", u""},
        {"comments are lines, not tails", "; c\n# c\n[DSN]\nPWD=a;b#c ; d\n", u"", u"",
         u"a;b#c ; d"},
        {"first = splits, quotes are text", "[DSN]\nServer==x\nPWD=\"q'\n", u"", u"=x", u"\"q'"},
        {"later key wins, empty value", "[DSN]\nDSN=a\nDSN=b\nServer=s\nServer=\n", u"b", u"", u""},
        {"other sections are left alone", "[Other]\nnonsense\nDSN=x\n[DSN]\nDSN=a\n[Z]\nDSN=z\n",
         u"a", u"", u""},
        {"keys before any section", "DSN=x\n[DSN]\nServer=s\n", u"", u"s", u""},
        {"UTF-8", "[DSN]\nPWD=ü€日本\xF0\x9F\x98\x80\n", u"", u"", u"ü€日本\U0001F600"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.m_point);
        const DialogValues values = ParseInitialValues(c.m_contents, "f");
        EXPECT_EQ(values.m_dsn, c.m_dsn);
        EXPECT_EQ(values.m_server, c.m_server);
        EXPECT_EQ(values.m_pwd, c.m_pwd);
        EXPECT_EQ(values.m_database, u"");
    }
}

TEST(InitialValues, RefusesMalformedLinesWithFileAndLineButWithoutTheValue) {
    const std::pair<const char*, std::string> cases[] = {
        {"no equals sign", "[DSN]\n\nsecret\n"},
        {"nothing before the equals sign", "[DSN]\n\n=secret\n"},
        {"unclosed section", "[DSN]\n\n[secret\n"},
        {"unknown key", "[DSN]\n\nPassword=secret\n"},
        {"not UTF-8", "[DSN]\n\nPWD=secret\xFF\n"},
        {"NUL", std::string("[DSN]\n\nPWD=secret\0x\n", 20)},
        {"tab", "[DSN]\n\nPWD=secret\tx\n"},
        {"longer than what is read back", "[DSN]\n\nPWD=secret" + std::string(254, 'x') + "\n"},
    };
    for (const auto& [point, contents] : cases) {
        SCOPED_TRACE(point);
        const std::string error =
            ErrorOf([&text = contents] { ParseInitialValues(text, "file.ini"); });
        EXPECT_EQ(error.find("Initial values of a DSN: file.ini, line 3: "), 0U) << error;
        EXPECT_EQ(error.find("secret"), std::string::npos) << error;
        EXPECT_EQ(error.find('.', error.find(" 3: ")), error.size() - 1)
            << "one sentence: " << error;
    }
}

TEST_F(InitialValuesFile, ReadsTheNamedFileForValuesThatAreNotSet) {
    m_directory.Write("values.ini", "[DSN]\nServer=s\n" + std::string(9000, '#') + "\nUID=u\n");
    VeltraneDSNDialog dialog;
    dialog.SetServer(u"");
    EXPECT_EQ(dialog.GetServer(), u"");
    EXPECT_EQ(dialog.GetUid(), u"u");
    EXPECT_EQ(dialog.GetPwd(), u"");
}

TEST_F(InitialValuesFile, ALargeFileIsRefused) {
    m_directory.Write("values.ini", std::string((1 << 20) + 1, '#'));
    EXPECT_EQ(LoadError(), ": larger than 1 MiB.");
}

TEST_F(InitialValuesFile, WithoutAFileAllValuesAreEmptyNotNull) {
    if (std::filesystem::exists(DEFAULT_INITIAL_VALUES_FILE)) {
        GTEST_SKIP() << "this machine has its own defaults";
    }
    Orska::Test::SetVariable("VELTRANE_DSN_INITIAL_VALUES", nullptr);
    EXPECT_EQ(LoadInitialValues().m_dsn, u"");
    EXPECT_EQ(LoadInitialValues().m_database, u"");
}

TEST_F(InitialValuesFile, AnUnusableFileStopsOnlyRequestsThatNeedIt) {
    VeltraneDSNDialog editor;
    EXPECT_THROW(editor.ShowDialog(), std::runtime_error);
    editor.SetDSN(u"a");
    editor.SetServer(u"b");
    editor.SetCognosNamespace(std::nullopt);
    editor.SetMicroStrategyLoginMode(u"");
    editor.SetUid(u"c");
    editor.SetPwd(u"d");
    EXPECT_THROW(editor.GetDatabase(), std::runtime_error);
    EXPECT_THROW(editor.ShowDialog(), std::runtime_error);
    editor.SetDatabase(u"e");
    EXPECT_EQ(editor.GetDSN(), u"a");
    EXPECT_EQ(editor.GetCognosNamespace(), std::nullopt);
    EXPECT_EQ(editor.GetDatabase(), u"e");
}

}  // namespace
}  // namespace Veltrane::ODBC
