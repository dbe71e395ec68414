#include "VeltraneDialog/EditorChoice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "VeltraneDialog/RunnableProgram.h"
#include "tests/support/TemporaryDirectory.h"

namespace Veltrane::ODBC {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EditorChoiceTest : public testing::Test {
protected:
    std::string MakeProgram(const std::string& in_name) const {
        std::string program = m_directory + in_name;
        std::ofstream(program) << "#!/bin/sh\n";
        chmod(program.c_str(), 0755);
        return program;
    }

    const Orska::Test::TemporaryDirectory m_temporary;
    const std::string m_directory = std::filesystem::canonical(m_temporary.GetPath());
    const std::string m_desktop = MakeProgram("/veltrane-dsn-editor-desktop");
    const std::string m_terminal = MakeProgram("/veltrane-dsn-editor-terminal");
    const EditorSurroundings m_all = {"", true, "", {m_directory + "/absent", m_directory}};
};

TEST_F(EditorChoiceTest, ByDefaultTheDesktopComesFirst) {
    EXPECT_THAT(ChooseEditor(m_all).m_programs, ElementsAre(m_desktop, m_terminal));

    EditorSurroundings noDisplay = m_all;
    noDisplay.m_hasDisplay = false;
    EXPECT_THAT(ChooseEditor(noDisplay).m_programs, ElementsAre(m_terminal));

    EditorSurroundings noTerminal = m_all;
    noTerminal.m_terminalProblem = "it is gone";
    EXPECT_THAT(ChooseEditor(noTerminal).m_programs, ElementsAre(m_desktop));

    unlink(m_desktop.c_str());
    const EditorChoice withoutDesktop = ChooseEditor(m_all);
    EXPECT_THAT(withoutDesktop.m_programs, ElementsAre(m_terminal));
    EXPECT_EQ(withoutDesktop.m_problems, "veltrane-dsn-editor-desktop was looked for in " +
                                             m_directory + "/absent (No such file or directory) " +
                                             m_directory + " (No such file or directory). ");
}

TEST_F(EditorChoiceTest, AChosenEditorIsTheOnlyOne) {
    for (const auto& [wish, program] : {std::pair<std::string, std::string>("desktop", m_desktop),
                                        {"terminal", m_terminal},
                                        {m_desktop, m_desktop}}) {
        EditorSurroundings surroundings = m_all;
        surroundings.m_hasDisplay = false;
        surroundings.m_terminalProblem = "none";
        surroundings.m_wish = wish;
        EXPECT_THAT(ChooseEditor(surroundings).m_programs, ElementsAre(program));
    }
}

TEST_F(EditorChoiceTest, AChosenEditorThatIsMissingIsAnError) {
    const std::pair<std::string, std::string> cases[] = {
        {"window",
         "VELTRANE_DSN_EDITOR is \"window\"; it has to be desktop, terminal or an absolute "
         "path. "},
        {"bin/editor",
         "VELTRANE_DSN_EDITOR is \"bin/editor\"; it has to be desktop, terminal or an "
         "absolute path. "},
        {m_directory + "/none", m_directory + "/none: No such file or directory. "},
        {m_directory, m_directory + ": not a program. "},
    };
    for (const auto& [wish, problems] : cases) {
        EditorSurroundings surroundings = m_all;
        surroundings.m_wish = wish;
        EXPECT_THAT(ChooseEditor(surroundings).m_programs, IsEmpty());
        EXPECT_EQ(ChooseEditor(surroundings).m_problems, problems);
    }
}

TEST_F(EditorChoiceTest, AProgramThatOthersCouldReplaceIsRefused) {
    const std::string inner = m_directory + "/inner";
    mkdir(inner.c_str(), 0755);
    const std::string program = MakeProgram("/inner/editor");
    EXPECT_EQ(WhyNotRunnable(program), "");
    const std::tuple<std::string, mode_t, bool> cases[] = {
        {program, 0775, true},      {program, 0757, false}, {inner, 0775, true},
        {inner, 0757, false},       {inner, 01757, false},  {m_directory, 01757, true},
        {m_directory, 0757, false},
    };
    for (const auto& [path, mode, isFine] : cases) {
        SCOPED_TRACE(path + " " + std::to_string(mode));
        chmod(path.c_str(), mode);
        EXPECT_EQ(WhyNotRunnable(program), isFine ? "" : "others can write to " + path);
        chmod(path.c_str(), 0755);
    }
    const std::string link = m_directory + "/link";
    ASSERT_EQ(symlink(program.c_str(), link.c_str()), 0);
    chmod(inner.c_str(), 0757);
    EXPECT_EQ(WhyNotRunnable(link), "others can write to " + inner);
}

TEST_F(EditorChoiceTest, SearchesTheEditorsBesideThisProgram) {
    const std::string own = std::filesystem::canonical("/proc/self/exe").parent_path();
    EXPECT_THAT(LookAroundForEditors().m_directories, testing::Contains(own));
}

}  // namespace
}  // namespace Veltrane::ODBC
