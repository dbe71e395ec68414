#include "cli/dsn/DsnPlan.h"

#include <gtest/gtest.h>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {
namespace {

using Lines = std::vector<std::string>;

DsnWish Wish(Entries in_values) {
    DsnWish wish;
    wish.m_name = "sales";
    wish.m_driver = "Veltrane";
    wish.m_values = std::move(in_values);
    return wish;
}

const Entries STORED{{"driver", "veltrane"}, {"Extra", "1"},    {"Server", "s"},
                     {"PWD", "old"},         {"database", "d"}, {"UID", ""}};

TEST(DsnPlan, AddsWhatIsGivenInTheOrderOfTheSetupLibrary) {
    const DsnPlan plan = MakePlan(
        Wish({{"Trace", ""}, {"Database", "d"}, {"UID", ""}, {"PWD", "p"}, {"Server", "s"}}), {});
    EXPECT_EQ(plan.m_action, Action::Add);
    EXPECT_EQ(Difference(plan, true), (Lines{"+[sales]", "+Driver=Veltrane", "+Server=s", "+PWD=p",
                                             "+Database=d", "+Trace="}));
}

TEST(DsnPlan, KeepsWhatIsNotGiven) {
    DsnWish wish = Wish({{"PWD", "new"}, {"SERVER", "s"}});
    const DsnPlan plan = MakePlan(wish, STORED);
    EXPECT_EQ(plan.m_action, Action::Change);
    EXPECT_EQ(Difference(plan, false), (Lines{"-PWD=********", "+PWD=********"}));
    EXPECT_EQ(Difference(plan, true), (Lines{"-PWD=old", "+PWD=new"}));
    wish.m_isReplaced = true;
    wish.m_values.Set("Database", "d");
    EXPECT_EQ(Difference(MakePlan(wish, STORED), true),
              (Lines{"-Extra=1", "-PWD=old", "+PWD=new"}));
    wish.m_isReplaced = false;
    wish.m_unset = {"pwd", "extra"};
    EXPECT_EQ(Difference(MakePlan(wish, STORED), true), (Lines{"-Extra=1", "-PWD=old"}));
}

TEST(DsnPlan, DoesNothingWhereNothingDiffers) {
    EXPECT_EQ(MakePlan(Wish({{"Database", "d"}, {"UID", ""}, {"Namespace", ""}}), STORED).m_action,
              Action::None);
    DsnWish absent = Wish({});
    absent.m_isAbsent = true;
    EXPECT_EQ(MakePlan(absent, {}).m_action, Action::None);
    EXPECT_EQ(MakePlan(absent, STORED).m_action, Action::Remove);
    // An unknown key with an empty value is a key nevertheless.
    EXPECT_EQ(MakePlan(Wish({{"Trace", ""}}), STORED).m_action, Action::Change);
}

TEST(DsnPlan, RefusesWhatCouldNotBeReadBack) {
    const struct {
        const char* m_point;
        Entries m_values;
        const char* m_text;
    } cases[] = {
        {"no server", {{"Server", ""}, {"Database", "d"}}, "Server: "},
        {"no database", {{"Server", "s"}}, "Database: "},
        {"a line end", {{"Server", "s"}, {"Database", "a\nb"}}, "Database: "},
        {"an outer blank", {{"Server", "s"}, {"Database", "d"}, {"PWD", "secret "}}, "PWD: "},
        {"a long line",
         {{"Server", "s"}, {"Database", "d"}, {"PWD", std::string(996, 'x')}},
         "PWD: "},
        {"not UTF-8", {{"Server", "\xFF"}, {"Database", "d"}}, "Server: "},
        {"an unknown key that is a comment",
         {{"Server", "s"}, {"Database", "d"}, {"#x", "1"}},
         "#x: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        try {
            MakePlan(Wish(c.m_values), {});
            ADD_FAILURE() << "accepted";
        } catch (const CommandError& error) {
            EXPECT_EQ(std::string(error.what()).find(c.m_text), 0U) << error.what();
            EXPECT_EQ(std::string(error.what()).find("secret"), std::string::npos);
        }
    }
    DsnWish wish = Wish({{"Server", "s"}, {"Database", "d"}});
    wish.m_name = "a[b";
    EXPECT_THROW(MakePlan(wish, {}), CommandError);
    wish = Wish({{"X", std::string(997, 'x')}});
    EXPECT_EQ(MakePlan(wish, STORED).m_action, Action::Change);
}

TEST(DsnPlan, LeavesTheDsnsOfOtherDriversAlone) {
    DsnWish wish = Wish({{"Server", "x"}});
    const Entries other{{"Driver", "Other"}, {"Server", "s"}, {"Database", "d"}};
    EXPECT_THROW(MakePlan(wish, other), CommandError);
    wish.m_isAbsent = true;
    EXPECT_THROW(MakePlan(wish, other), CommandError);
    wish.m_driver = "OTHER";
    EXPECT_EQ(MakePlan(wish, other).m_action, Action::Remove);
}

TEST(Entries, MaskSecretsAndKnowKeys) {
    for (const char* key : {"PWD", "pwd", "Password", "ClientSecret", "AccessToken"}) {
        EXPECT_EQ(ShownValue({key, "x"}, false), MASK) << key;
        EXPECT_EQ(ShownValue({key, "x"}, true), "x") << key;
    }
    EXPECT_EQ(ShownValue({"UID", "x"}, false), "x");
    EXPECT_EQ(CanonicalKey("loginMODE"), "LoginMode");
    EXPECT_EQ(CanonicalKey("tRACE"), "tRACE");
    const Entries twice(std::vector<Entry>{{"a", "1"}, {"A", "2"}});
    EXPECT_EQ(twice.Get("A"), "1");
}

}  // namespace
}  // namespace Veltrane::Cli
