/// Whole requests through the entry points, narrow and wide, for the user and for the system: what
/// they answer, post and leave behind.
#include <gtest/gtest.h>

#include "VeltraneDialog/Utf8.h"
#include "tests/support/InstallerStage.h"
#include "tests/support/VeltraneDSNDialog_Fake.h"

extern "C" int ConfigDSN(void*, unsigned short, const char*, const char*);
extern "C" int ConfigDSNW(void*, unsigned short, const char16_t*, const char16_t*);

namespace Veltrane::ODBC {
namespace {

using namespace std::string_literals;
using Veltrane::Test::InstallerStage;
using Veltrane::Test::Keys;
using Veltrane::Test::MakeDialogValues;
using Veltrane::Test::Profile;
using Veltrane::Test::s_editor;

using Posted = std::vector<std::pair<unsigned long, std::string>>;

constexpr int ADD = 1;
constexpr int CONFIG = 2;
constexpr int REMOVE = 3;
constexpr int FIRST_SYSTEM_REQUEST = 4;

enum class Window { NONE, ACCEPTED, CANCELLED };
enum class Form { NARROW, WIDE };

const Posted NOTHING;
const Posted INVALID_KEYWORD = {{8, "Invalid keyword-value pairs."}};
const Posted INVALID_NAME = {{7, "Invalid driver or translator name."}};
const Posted INVALID_TYPE = {{5, "Invalid type of request."}};
const Posted FAILED = {{11, "Request failed."}};

/// What is stored before each request.
const Profile BEFORE = {
    {"x",
     {{"Driver", "drv"},
      {"Server", "s"},
      {"Namespace", "n"},
      {"PWD", "p"},
      {"Database", "d"},
      {"Extra", "1"}}},
    {"long", {{"Driver", "drv"}, {"Server", std::string(300, 'l')}, {"Database", "d"}}},
    {"other", {{"Driver", "Other"}, {"k", "v"}}},
};
const Keys GONE;
/// x as it is when it was saved unchanged: the key that the record does not know is dropped.
const Keys SAVED_X = {
    {"Driver", "drv"}, {"Server", "s"}, {"Namespace", "n"}, {"PWD", "p"}, {"Database", "d"}};
/// What is saved from an editor that starts with these values.
const DialogValues NEW_VALUES = MakeDialogValues(u"new", u"s2", u"d2");
const Keys SAVED_NEW = {{"Driver", "drv"}, {"Server", "s2"}, {"Database", "d2"}};

struct Row {
    const char* m_point;
    int m_request;
    std::string m_attributes;  ///< entries with their NULs
    Window m_window;
    Posted m_posted;
    Profile m_changes;  ///< what is different afterwards
    DialogValues m_values = NEW_VALUES;
    std::u16string m_typedName = u"";  ///< into an editor that is accepted
    const char* m_failing = "";
    bool m_isRefusedSilently = false;
};

const Row ROWS[] = {
    {"request 0", 0, "DSN=x\0"s, Window::NONE, INVALID_TYPE, {}},
    {"request 7", 7, "DSN=x\0"s, Window::ACCEPTED, INVALID_TYPE, {}},
    {"request 100", 100, "DSN=x\0"s, Window::NONE, INVALID_TYPE, {}},

    {"remove", REMOVE, "DSN=x\0"s, Window::NONE, NOTHING, {{"x", GONE}}},
    {"remove what is not there", REMOVE, "DSN=absent\0"s, Window::NONE, NOTHING, {}},
    {"remove without a list", REMOVE, "", Window::NONE, INVALID_KEYWORD, {}},
    {"remove without a name", REMOVE, "Server=s\0"s, Window::NONE, INVALID_KEYWORD, {}},
    {"remove with a refused name", REMOVE, "DSN=a[b\0"s, Window::NONE, INVALID_KEYWORD, {}},
    {"a refused removal is handed on without an error",
     REMOVE,
     "DSN=x\0"s,
     Window::NONE,
     NOTHING,
     {},
     NEW_VALUES,
     u"",
     "RemoveDSN",
     true},

    {"configure with an empty list", CONFIG, "", Window::NONE, INVALID_KEYWORD, {}},
    {"configure with an empty list and a window",
     CONFIG,
     "",
     Window::ACCEPTED,
     INVALID_KEYWORD,
     {}},
    {"keys are case-sensitive", CONFIG, "dsn=x\0"s, Window::ACCEPTED, INVALID_KEYWORD, {}},
    {"configure without a window saves a new editor's values",
     CONFIG,
     "DSN=x\0"s,
     Window::NONE,
     NOTHING,
     {{"new", SAVED_NEW}}},
    {"configure accepted", CONFIG, "DSN=x\0"s, Window::ACCEPTED, NOTHING, {{"x", SAVED_X}}},
    {"a new name leaves the section of the old one",
     CONFIG,
     "DSN=x\0"s,
     Window::ACCEPTED,
     NOTHING,
     {{"renamed", SAVED_X}},
     NEW_VALUES,
     u"renamed"},
    {"a refused new name", CONFIG, "DSN=x\0"s, Window::ACCEPTED, FAILED, {}, NEW_VALUES, u"a[b"},
    {"configure cancelled saves what was loaded",
     CONFIG,
     "DSN=x\0"s,
     Window::CANCELLED,
     NOTHING,
     {{"x", SAVED_X}}},
    {"stored values replace given ones",
     CONFIG,
     "DSN=x\0Server=given\0UID=given\0"s,
     Window::CANCELLED,
     NOTHING,
     {{"x", SAVED_X}}},
    {"of two names the later one counts",
     CONFIG,
     "DSN=other\0junk\0DSN=x\0"s,
     Window::CANCELLED,
     NOTHING,
     {{"x", SAVED_X}}},
    {"long values go back whole although 259 characters of them were loaded",
     CONFIG,
     "DSN=long\0"s,
     Window::ACCEPTED,
     NOTHING,
     {}},

    {"add", ADD, "", Window::NONE, NOTHING, {{"new", SAVED_NEW}}},
    {"add with a list", ADD, "DSN=x\0"s, Window::NONE, NOTHING, {{"new", SAVED_NEW}}},
    {"add with a list without a name", ADD, "Server=s\0"s, Window::NONE, INVALID_KEYWORD, {}},
    {"add accepted shows a new editor's values",
     ADD,
     "DSN=x\0"s,
     Window::ACCEPTED,
     NOTHING,
     {{"new", SAVED_NEW}}},
    {"add cancelled with an empty list saves the empty name",
     ADD,
     "",
     Window::CANCELLED,
     INVALID_NAME,
     {}},
    {"add cancelled with a stored name",
     ADD,
     "DSN=x\0"s,
     Window::CANCELLED,
     NOTHING,
     {{"x", SAVED_X}}},
    {"add cancelled with a new name saves empty values",
     ADD,
     "DSN=n\0"s,
     Window::CANCELLED,
     NOTHING,
     {{"n", {{"Driver", "drv"}, {"Server", ""}, {"Database", ""}}}}},
    {"any text",
     ADD,
     "",
     Window::NONE,
     NOTHING,
     {{"ü€日",
       {{"Driver", "drv"},
        {"Server", "p=;#'"},
        {"UID", "日本\U0001F600"},
        {"PWD", "ü €"},
        {"Database", "d"}}}},
     MakeDialogValues(u"ü€日", u"p=;#'", u"d", u"日本\U0001F600", u"ü €")},
    {"blanks",
     ADD,
     "",
     Window::NONE,
     NOTHING,
     {{"new", {{"Driver", "drv"}, {"Server", " s"}, {"PWD", "p w"}, {"Database", "d"}}}},
     MakeDialogValues(u"new", u" s", u"d", u" \t ", u" p w ")},

    {"a refused name from the editor",
     ADD,
     "",
     Window::NONE,
     FAILED,
     {},
     MakeDialogValues(u"a[b", u"s", u"d")},
    {"no name", ADD, "", Window::NONE, FAILED, {}, MakeDialogValues(u"", u"s", u"d")},
    {"no server", ADD, "", Window::NONE, FAILED, {}, MakeDialogValues(u"new", u"", u"d")},
    {"no database", ADD, "", Window::NONE, FAILED, {}, MakeDialogValues(u"new", u"s", u"")},

    {"removal fails",
     CONFIG,
     "DSN=x\0"s,
     Window::ACCEPTED,
     FAILED,
     {},
     NEW_VALUES,
     u"",
     "RemoveDSN"},
    {"section fails",
     CONFIG,
     "DSN=x\0"s,
     Window::ACCEPTED,
     INVALID_NAME,
     {{"x", GONE}},
     NEW_VALUES,
     u"",
     "WriteDSN"},
    {"driver fails",
     CONFIG,
     "DSN=x\0"s,
     Window::ACCEPTED,
     FAILED,
     {{"x", {{"Driver", "path of drv"}}}},
     NEW_VALUES,
     u"",
     "Write Driver"},
    {"server fails",
     CONFIG,
     "DSN=x\0"s,
     Window::ACCEPTED,
     FAILED,
     {{"x", {{"Driver", "drv"}}}},
     NEW_VALUES,
     u"",
     "Write Server"},
    {"password fails",
     CONFIG,
     "DSN=x\0"s,
     Window::CANCELLED,
     FAILED,
     {{"x", {{"Driver", "drv"}, {"Server", "s"}, {"Namespace", "n"}}}},
     NEW_VALUES,
     u"",
     "Write PWD"},
    {"database fails",
     CONFIG,
     "DSN=x\0"s,
     Window::CANCELLED,
     FAILED,
     {{"x", {{"Driver", "drv"}, {"Server", "s"}, {"Namespace", "n"}, {"PWD", "p"}}}},
     NEW_VALUES,
     u"",
     "Write Database"},
};

int Call(Form in_form, void* in_window, int in_request, const std::string& in_attributes) {
    const auto request = static_cast<unsigned short>(in_request);
    if (in_form == Form::NARROW) {
        return ConfigDSN(in_window, request, "drv", (in_attributes + '\0').c_str());
    }
    std::u16string attributes;
    EXPECT_TRUE(DecodeUtf8(in_attributes + '\0', attributes));
    return ConfigDSNW(in_window, request, u"drv", attributes.c_str());
}

void PrepareEditor(const Row& in_row) {
    s_editor = {};
    s_editor.m_initialValues = in_row.m_values;
    s_editor.m_result = in_row.m_window == Window::ACCEPTED ? 1 : 2;
    s_editor.m_edit = [&in_row](DialogValues& io_values) {
        if (!in_row.m_typedName.empty()) io_values.m_dsn = in_row.m_typedName;
    };
}

Profile After(const Row& in_row) {
    Profile profile = BEFORE;
    for (const auto& [name, keys] : in_row.m_changes) {
        profile[name] = keys;
        if (keys.empty()) profile.erase(name);
    }
    return profile;
}

void Check(const Row& in_row, InstallerStage& io_stage, Form in_form, bool in_isSystem) {
    int window = 0;  // never looked at
    io_stage.Begin(in_isSystem, BEFORE);
    io_stage.FailAt(in_row.m_failing);
    PrepareEditor(in_row);
    const bool isKnown = in_row.m_request >= ADD && in_row.m_request <= REMOVE;
    const int request =
        in_row.m_request + (in_isSystem && isKnown ? FIRST_SYSTEM_REQUEST - ADD : 0);
    const int result = Call(in_form, in_row.m_window == Window::NONE ? nullptr : &window, request,
                            in_row.m_attributes);
    EXPECT_EQ(result, in_row.m_posted.empty() && !in_row.m_isRefusedSilently ? 1 : 0);
    EXPECT_EQ(io_stage.Posted(), in_row.m_posted);
    EXPECT_EQ(io_stage.Get(), After(in_row));
    EXPECT_EQ(io_stage.GetOther(), Profile());
    const bool isEditorMade = in_row.m_request == ADD || in_row.m_request == CONFIG;
    EXPECT_EQ(!s_editor.m_calls.empty(), isEditorMade);
}

TEST(Requests, AnswerPostAndLeaveWhatTheyShould) {
    InstallerStage stage;
    for (const Row& row : ROWS) {
        for (const Form form : {Form::NARROW, Form::WIDE}) {
            for (const bool isSystem : {false, true}) {
                SCOPED_TRACE(row.m_point + (form == Form::WIDE ? ", wide"s : ", narrow"s) +
                             (isSystem ? ", system" : ", user"));
                Check(row, stage, form, isSystem);
            }
        }
    }
}

TEST(Requests, ListsWithoutEntriesAreEmpty) {
    InstallerStage stage;
    stage.Begin(false, BEFORE);
    s_editor = {};
    s_editor.m_initialValues = NEW_VALUES;
    // An add with an entry but no name would be refused.
    for (const char* list : {static_cast<const char*>(nullptr), "", "\0\0Server=s\0"}) {
        EXPECT_EQ(ConfigDSN(nullptr, ADD, "drv", list), 1);
    }
    for (const char16_t* list : {static_cast<const char16_t*>(nullptr), u"", u"\0\0Server=s\0"}) {
        EXPECT_EQ(ConfigDSNW(nullptr, ADD, u"drv", list), 1);
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
