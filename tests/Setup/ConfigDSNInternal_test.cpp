#include "Setup/ConfigDSNInternal.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <stdexcept>
#include <utility>

#include "Exceptions/ErrorException.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "tests/support/OdbcInstaller_Fake.h"
#include "tests/support/VeltraneDSNDialog_Fake.h"

namespace Veltrane::ODBC {
namespace {

using namespace Orska::Support;
using testing::ElementsAre;
using Veltrane::Test::MakeDialogValues;
using Veltrane::Test::s_editor;
using Veltrane::Test::s_installer;
using namespace std::string_literals;

using Posted = std::vector<std::pair<unsigned long, std::string>>;

struct WithoutMessage : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

/// What the editor is asked and in which order; Requests_test has the outcomes.
class ConfigDSNInternalTest : public testing::Test {
protected:
    void SetUp() override {
        s_installer = {};
        s_installer.m_invalidNames = {"bad"};
        s_installer.m_profile["x"] = {
            {"Driver", "drv"}, {"Server", "s"}, {"PWD", "p"}, {"Database", "d"}};
        s_editor = {};
        s_editor.m_initialValues = MakeDialogValues(u"new", u"s2", u"d2");
    }

    static int Call(unsigned short in_type, const std::string& in_attributes,
                    bool in_hasWindow = false) {
        int window = 0;
        return ConfigDSNInternal(in_hasWindow ? &window : nullptr, in_type, L"drv",
                                 orska_wstring(in_attributes));
    }

    /// The values under which a DSN was saved, in the order of the section.
    static std::string Section(const std::string& in_dsn) {
        std::string text;
        for (const auto& [key, value] : s_installer.m_profile[in_dsn]) {
            text += key + "=" + value + ";";
        }
        return text;
    }
};

TEST_F(ConfigDSNInternalTest, WithoutAWindowTheNewEditorsValuesAreSaved) {
    for (const unsigned short type :
         {ODBC_ADD_DSN, ODBC_ADD_SYS_DSN, ODBC_CONFIG_DSN, ODBC_CONFIG_SYS_DSN}) {
        SCOPED_TRACE(type);
        SetUp();
        EXPECT_EQ(Call(type, "DSN=x\0"s), 1);
        EXPECT_EQ(Section("new"), "Driver=drv;Server=s2;Database=d2;");
        EXPECT_THAT(s_editor.m_calls,
                    ElementsAre("construct", "Get DSN", "Get Server", "Get Namespace",
                                "Get LoginMode", "Get UID", "Get PWD", "Get Database"));
    }
}

TEST_F(ConfigDSNInternalTest, ConfigureWithAWindowFillsShowsAndReadsTheEditor) {
    s_editor.m_edit = [](DialogValues& io_values) {
        EXPECT_EQ(io_values.m_pwd, u"p");
        io_values.m_dsn = u"renamed";
    };
    EXPECT_EQ(Call(ODBC_CONFIG_DSN, "DSN=x\0"s, true), 1);
    EXPECT_THAT(s_editor.m_calls,
                ElementsAre("construct", "Set DSN x", "Set Server s", "Set Namespace ",
                            "Set LoginMode ", "Set UID ", "Set PWD p", "Set Database d",
                            "ShowDialog", "Get DSN", "Get Server", "Get Namespace", "Get LoginMode",
                            "Get UID", "Get PWD", "Get Database"));
    // Renaming keeps the section of the old name.
    EXPECT_EQ(Section("renamed"), "Driver=drv;Server=s;PWD=p;Database=d;");
    EXPECT_EQ(Section("x"), "Driver=drv;Server=s;PWD=p;Database=d;");
}

TEST_F(ConfigDSNInternalTest, AddWithAWindowShowsTheEditorsOwnValues) {
    s_editor.m_edit = [](DialogValues& io_values) { EXPECT_EQ(io_values.m_server, u"s2"); };
    EXPECT_EQ(Call(ODBC_ADD_DSN, "DSN=x\0"s, true), 1);
    EXPECT_EQ(s_editor.m_calls[1], "ShowDialog");
    EXPECT_EQ(Section("new"), "Driver=drv;Server=s2;Database=d2;");
}

TEST_F(ConfigDSNInternalTest, NullAndEmptyServerOrDatabaseAreRefused) {
    for (const DialogString& text : {DialogString(), DialogString(u"")}) {
        s_editor.m_initialValues.m_server = text;
        EXPECT_EQ(Call(ODBC_ADD_DSN, ""), 0);
        s_editor.m_initialValues.m_server = u"s";
        s_editor.m_initialValues.m_database = text;
        EXPECT_EQ(Call(ODBC_ADD_DSN, ""), 0);
        s_editor.m_initialValues.m_database = u"d";
    }
    EXPECT_EQ(s_installer.m_posted, (Posted(4, {11, "Request failed."})));
}

TEST_F(ConfigDSNInternalTest, EachOperationOfTheInstallerFails) {
    for (const auto& [type, hasWindow] :
         std::initializer_list<std::pair<unsigned short, bool>>{{ODBC_ADD_DSN, false},
                                                                {ODBC_ADD_SYS_DSN, true},
                                                                {ODBC_CONFIG_DSN, true},
                                                                {ODBC_CONFIG_SYS_DSN, false},
                                                                {ODBC_REMOVE_DSN, false},
                                                                {ODBC_REMOVE_SYS_DSN, true}}) {
        std::string failed = "none yet";
        for (std::size_t number = 0; !failed.empty(); ++number) {
            SetUp();
            s_installer.m_profile["new"] = {{"Driver", "drv"}, {"Server", "old"}};
            s_editor.m_initialValues = MakeDialogValues(u"new", u"s2", u"d2", u"u", u"p");
            failed.clear();
            s_installer.m_fails = [&, call = std::size_t{0}](const std::string& in_call) mutable {
                if (call++ == number) failed = in_call;
                return failed == in_call;
            };
            const int result = Call(type, "DSN=x\0"s, hasWindow);
            SCOPED_TRACE(testing::Message() << "request " << type << ", failed: " << failed);
            // What cannot be read counts as empty, and an empty server can be refused.
            const bool isRead = failed.starts_with("Read ");
            if (!isRead) {
                EXPECT_EQ(result, failed.empty() ? 1 : 0);
            }
            // Why nothing is removed is the installer's to say.
            const bool isRemoval = type % 3 == 0 && failed.starts_with("RemoveDSN");
            EXPECT_EQ(s_installer.m_posted.size(), result == 1 || isRemoval ? 0u : 1u);
        }
    }
}

TEST_F(ConfigDSNInternalTest, EveryKindOfExceptionIsPostedOnceByTheFirstHandlerThatFits) {
    const struct {
        const char* m_point;
        std::function<void()> m_throw;
        unsigned long m_code;
        const char* m_text;
    } cases[] = {
        {"support library", [] { throw ProductException(L"IOError"); }, 11, "IOError"},
        {"setup", [] { throw VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_HWND); },
         3, "Invalid window handle."},
        {"editor", [] { throw std::runtime_error("kein Fenster, ü"); }, 11, "kein Fenster, ü"},
        {"no message", [] { throw WithoutMessage(); }, 11,
         "NULLPTR is not supported for this conversion."},
        {"no memory", [] { throw std::bad_alloc(); }, 11, "std::bad_alloc"},
        {"anything else", [] { throw 42; }, 11, "Request failed."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        s_installer.m_posted.clear();
        s_editor.m_onConstruct = c.m_throw;
        EXPECT_EQ(Call(ODBC_ADD_DSN, "DSN=x\0"s), 0);
        EXPECT_EQ(s_installer.m_posted, (Posted{{c.m_code, c.m_text}}));
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
