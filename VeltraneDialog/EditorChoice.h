/// Which editor program to show: the one that VELTRANE_DSN_EDITOR asks for ("desktop", "terminal"
/// or the absolute path of a program), else the desktop editor when there is a display, else the
/// terminal editor when there is a terminal. The rules, without the looking around.
#ifndef VELTRANEDIALOG_EDITORCHOICE_H
#define VELTRANEDIALOG_EDITORCHOICE_H

#include <string>
#include <vector>

namespace Veltrane::ODBC {

/// What the choice depends on.
struct EditorSurroundings {
    /// VELTRANE_DSN_EDITOR; empty: no wish.
    std::string m_wish;
    bool m_hasDisplay = false;
    /// Why the terminal cannot be used; empty when it can.
    std::string m_terminalProblem;
    /// Where the programs may be, in the order of the search.
    std::vector<std::string> m_directories;
};

struct EditorChoice {
    /// What to try, in this order: the next one when one says that it cannot show anything.
    std::vector<std::string> m_programs;
    /// Why there is nothing else, for the error when all of them fail; sentences.
    std::string m_problems;
};

EditorChoice ChooseEditor(const EditorSurroundings& in_surroundings);

/// The surroundings of this process. The environment of a program with raised privileges is
/// ignored.
EditorSurroundings LookAroundForEditors();

/// @return why a program must not be run: it is not there, or somebody else could replace it; empty
///         when it may
std::string WhyNotRunnable(const std::string& in_program);

}  // namespace Veltrane::ODBC

#endif
