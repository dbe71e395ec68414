/// Whole requests through the entry points, narrow and wide, for the user and for the system: their
/// results, posted errors and stored values.
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
using enum Window;
enum class Form { NARROW, WIDE };

const Posted NOTHING;
const Posted KEYWORD = {{8, "Invalid keyword-value pairs."}};
const Posted NAME = {{7, "Invalid driver or translator name."}};
const Posted TYPE = {{5, "Invalid type of request."}};
const Posted FAILED = {{11, "Request failed."}};

/// The stored values before each request.
const Profile BEFORE = {
    {"x",
     {{"Driver", "d"},  // of one letter
      {"Server", "s"},
      {"Namespace", "n"},
      {"PWD", "p"},
      {"Database", "d"},
      {"Extra", "1"}}},
    {"long", {{"Driver", "drv"}, {"Server", std::string(300, 'l')}, {"Database", "d"}}},
    {"other", {{"Driver", "Other"}, {"k", "v"}}},
};
const std::string X = "DSN=x\0"s;
const Keys GONE;
/// x after an unchanged save: a key that the record does not know is dropped.
const Keys SAVED = {
    {"Driver", "drv"}, {"Server", "s"}, {"Namespace", "n"}, {"PWD", "p"}, {"Database", "d"}};
/// x after a save that failed after some of its keys.
const Keys SERVER_FAILED = {{"Driver", "drv"}};
const Keys DATABASE_FAILED = {{"Driver", "drv"}, {"Server", "s"}, {"Namespace", "n"}, {"PWD", "p"}};
/// The values saved from an editor that starts with these.
const DialogValues NEW_VALUES = MakeDialogValues(u"new", u"s2", u"d2");
const Keys SAVED_NEW = {{"Driver", "drv"}, {"Server", "s2"}, {"Database", "d2"}};
const Keys SAVED_EMPTY = {{"Driver", "drv"}, {"Server", ""}, {"Database", ""}};

struct Row {
    const char* m_point;
    int m_request;
    std::string m_attributes;  ///< entries with their NULs
    Window m_window;
    Posted m_posted;
    Profile m_changes = {};  ///< the differences afterwards
    const char* m_failing = "";
    std::u16string m_typedName = u"";  ///< typed into an editor that is accepted
    DialogValues m_values = NEW_VALUES;
};

const Row ROWS[] = {
    {"request 0", 0, X, NONE, TYPE},
    {"request 7", 7, X, ACCEPTED, TYPE},

    {"remove", REMOVE, X, NONE, NOTHING, {{"x", GONE}}},
    {"remove a missing data source", REMOVE, "DSN=absent\0"s, NONE, NOTHING},
    {"remove without a list", REMOVE, "", NONE, KEYWORD},
    {"remove without a name", REMOVE, "Server=s\0"s, NONE, KEYWORD},
    {"blanks in a name stay", REMOVE, "DSN= x \0"s, NONE,
     InstallerStage::IS_REGISTRY ? NOTHING : KEYWORD},
    {"blanks around the key", REMOVE, " DSN=x\0DSN =x\0"s, NONE, KEYWORD},
    {"a key that is only a prefix", REMOVE, "DSN1=x\0DS=x\0"s, NONE, KEYWORD},
    {"other entries, also without =",
     REMOVE,
     "A=1\0DSN\0junk\0DSN=x\0junk\0D=4\0"s,
     NONE,
     NOTHING,
     {{"x", GONE}}},
    {"remove with a refused name", REMOVE, "DSN=a[b\0"s, NONE, KEYWORD},
    {"a refused removal is passed on without an error", REMOVE, X, NONE, NOTHING, {}, "RemoveDSN"},

    {"configure with an empty list", CONFIG, "", NONE, KEYWORD},
    {"configure with an empty list and a window", CONFIG, "", ACCEPTED, KEYWORD},
    {"keys are case-sensitive", CONFIG, "dsn=x\0"s, ACCEPTED, KEYWORD},
    {"no window: a new editor's values", CONFIG, X, NONE, NOTHING, {{"new", SAVED_NEW}}},
    {"configure accepted", CONFIG, X, ACCEPTED, NOTHING, {{"x", SAVED}}},
    {"the old name stays", CONFIG, X, ACCEPTED, NOTHING, {{"renamed", SAVED}}, "", u"renamed"},
    {"a refused new name", CONFIG, X, ACCEPTED, FAILED, {}, "", u"a[b"},
    {"cancelled: what was loaded", CONFIG, X, CANCELLED, NOTHING, {{"x", SAVED}}},
    {"stored values replace given ones",
     CONFIG,
     "DSN=x\0Server=given\0UID=given\0"s,
     CANCELLED,
     NOTHING,
     {{"x", SAVED}}},
    {"the later of two names counts",
     CONFIG,
     "DSN=other\0junk\0DSN=x\0"s,
     CANCELLED,
     NOTHING,
     {{"x", SAVED}}},
    {"259 characters are loaded, all are saved", CONFIG, "DSN=long\0"s, ACCEPTED, NOTHING},

    {"add", ADD, "", NONE, NOTHING, {{"new", SAVED_NEW}}},
    {"add with a list without a name", ADD, "Server=s\0"s, NONE, KEYWORD},
    {"accepted: a new editor's values", ADD, X, ACCEPTED, NOTHING, {{"new", SAVED_NEW}}},
    {"cancelled with an empty list: the empty name", ADD, "", CANCELLED, NAME},
    {"add cancelled with a stored name", ADD, X, CANCELLED, NOTHING, {{"x", SAVED}}},
    {"a new one", ADD, "DSN=n\0"s, CANCELLED, NOTHING, {{"n", SAVED_EMPTY}}},

    {"removal fails", CONFIG, X, ACCEPTED, FAILED, {}, "RemoveDSN"},
    {"section fails", CONFIG, X, ACCEPTED, NAME, {{"x", GONE}}, "WriteDSN"},
    {"driver fails",
     CONFIG,
     X,
     ACCEPTED,
     FAILED,
     {{"x", {{"Driver", InstallerStage::WRITTEN_DRIVER}}}},
     "Write Driver"},
    {"server fails", CONFIG, X, ACCEPTED, FAILED, {{"x", SERVER_FAILED}}, "Write Server"},
    {"database fails", CONFIG, X, CANCELLED, FAILED, {{"x", DATABASE_FAILED}}, "Write Database"},
};

/// Requests to add, without a window, from an editor with these values.
const struct {
    const char* m_point;
    DialogValues m_values;
    Posted m_posted;
    Profile m_changes = {};
} VALUES[] = {
    {"any text",
     MakeDialogValues(u"ü€日", u"p=;#'", u"d", u"日本\U0001F600", u"ü €"),
     NOTHING,
     {{"ü€日",
       {{"Driver", "drv"},
        {"Server", "p=;#'"},
        {"UID", "日本\U0001F600"},
        {"PWD", "ü €"},
        {"Database", "d"}}}}},
    {"blanks",
     MakeDialogValues(u"new", u"s", u"d", u" \t ", u" p w "),
     NOTHING,
     {{"new", {{"Driver", "drv"}, {"Server", "s"}, {"PWD", "p w"}, {"Database", "d"}}}}},
    {"a blank of a required value", MakeDialogValues(u"new", u" s", u"d"),
     InstallerStage::IS_REGISTRY ? NOTHING : FAILED,
     InstallerStage::IS_REGISTRY
         ? Profile{{"new", {{"Driver", "drv"}, {"Server", " s"}, {"Database", "d"}}}}
         : Profile()},
    {"a refused name", MakeDialogValues(u"a[b", u"s", u"d"), FAILED},
    {"no name", MakeDialogValues(u"", u"s", u"d"), FAILED},
    {"no server", MakeDialogValues(u"new", u"", u"d"), FAILED},
    {"no database", MakeDialogValues(u"new", u"s", u""), FAILED},
    {"null for a server", MakeDialogValues(u"new", nullptr, u"d"), FAILED},
    {"null for a database", MakeDialogValues(u"new", u"s", nullptr), FAILED},
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
    s_editor.m_result = in_row.m_window == ACCEPTED ? 1 : 2;
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
    const int result =
        Call(in_form, in_row.m_window == NONE ? nullptr : &window, request, in_row.m_attributes);
    // The installer posts why nothing is removed.
    const bool isRemovalRefused = in_row.m_request == REMOVE && *in_row.m_failing != '\0';
    EXPECT_EQ(result, in_row.m_posted.empty() && !isRemovalRefused ? 1 : 0);
    EXPECT_EQ(io_stage.Posted(), in_row.m_posted);
    EXPECT_EQ(io_stage.Get(), After(in_row));
    EXPECT_EQ(io_stage.GetOther(), Profile());
    const bool isEditorMade = in_row.m_request == ADD || in_row.m_request == CONFIG;
    EXPECT_EQ(s_editor.m_isMade, isEditorMade);
}

TEST(Requests, ReturnPostAndStoreWhatTheyShould) {
    InstallerStage stage;
    std::vector<Row> rows(std::begin(ROWS), std::end(ROWS));
    for (const auto& [point, values, posted, changes] : VALUES) {
        rows.push_back({point, ADD, "", NONE, posted, changes, "", u"", values});
    }
    for (const Row& row : rows) {
        for (const Form form : {Form::NARROW, Form::WIDE}) {
            for (const bool isSystem : {false, true}) {
                SCOPED_TRACE(row.m_point + (form == Form::WIDE ? ", wide"s : ", narrow"s) +
                             (isSystem ? ", system" : ", user"));
                Check(row, stage, form, isSystem);
            }
        }
    }
}

TEST(Requests, TheEditorGetsNoMoreThan259Characters) {
    InstallerStage stage;
    stage.Begin(false, BEFORE);
    s_editor = {};
    std::size_t length = 0;
    s_editor.m_edit = [&](DialogValues& in_values) { length = in_values.m_server->size(); };
    EXPECT_EQ(Call(Form::NARROW, &stage, CONFIG, "DSN=long\0"s), 1);
    EXPECT_EQ(length, 259u);
}

TEST(Requests, ListsWithoutEntriesAreEmpty) {
    InstallerStage stage;
    stage.Begin(false, BEFORE);
    s_editor = {};
    s_editor.m_initialValues = NEW_VALUES;
    // An add request with an entry but no name would be refused.
    for (const char* list : {static_cast<const char*>(nullptr), "", "\0\0Server=s\0"}) {
        EXPECT_EQ(ConfigDSN(nullptr, ADD, "drv", list), 1);
    }
    for (const char16_t* list : {static_cast<const char16_t*>(nullptr), u"", u"\0\0Server=s\0"}) {
        EXPECT_EQ(ConfigDSNW(nullptr, ADD, u"drv", list), 1);
    }
}

/// Takes minutes if each entry is searched together with those after it.
TEST(Requests, AListCanHaveMillionsOfEntries) {
    InstallerStage stage;
    stage.Begin(false, BEFORE);
    std::string list;
    while (list.size() < (std::size_t{4} << 20)) list += "a\0"s;
    EXPECT_EQ(Call(Form::NARROW, nullptr, REMOVE, list + X), 1);
}

}  // namespace
}  // namespace Veltrane::ODBC
