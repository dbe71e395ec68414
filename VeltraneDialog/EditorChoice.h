/// Chooses the editor program: the one named in VELTRANE_DSN_EDITOR ("desktop", "terminal" or the
/// absolute path of a program), else the desktop editor if there is a display, else the terminal
/// editor if there is a terminal.
#ifndef VELTRANEDIALOG_EDITORCHOICE_H
#define VELTRANEDIALOG_EDITORCHOICE_H

#include <string>
#include <vector>

#include "VeltraneDialog/EditorSurroundings.h"

namespace Veltrane::ODBC {

struct EditorChoice {
    /// Programs to try, in order: the next one if one cannot show anything.
    std::vector<std::string> m_programs;
    /// Why there are no others, in sentences, for the error when all of them fail.
    std::string m_problems;
};

EditorChoice ChooseEditor(const EditorSurroundings& in_surroundings);

}  // namespace Veltrane::ODBC

#endif
