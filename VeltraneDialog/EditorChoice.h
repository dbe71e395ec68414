/// Chooses the editor program: the one named in VELTRANE_DSN_EDITOR ("desktop", "terminal" or the
/// absolute path of a program), else the desktop editor if there is a display, else the terminal
/// editor if there is a terminal.
#ifndef VELTRANEDIALOG_EDITORCHOICE_H
#define VELTRANEDIALOG_EDITORCHOICE_H

#include <string>
#include <vector>

namespace Veltrane::ODBC {

/// The input of the choice.
struct EditorSurroundings {
    /// VELTRANE_DSN_EDITOR; empty if it is not set.
    std::string m_wish;
    bool m_hasDisplay = false;
    /// Why the terminal cannot be used; empty when it can.
    std::string m_terminalProblem;
    /// Directories to search for the programs, in order.
    std::vector<std::string> m_directories;
};

struct EditorChoice {
    /// Programs to try, in order: the next one if one cannot show anything.
    std::vector<std::string> m_programs;
    /// Why there are no others, in sentences, for the error when all of them fail.
    std::string m_problems;
};

EditorChoice ChooseEditor(const EditorSurroundings& in_surroundings);

/// Returns the surroundings of this process. With raised privileges it ignores the environment.
EditorSurroundings LookAroundForEditors();

/// @return why a program must not be run: it does not exist, or others could replace it; empty when
///         it can be run
std::string WhyNotRunnable(const std::string& in_program);

}  // namespace Veltrane::ODBC

#endif
