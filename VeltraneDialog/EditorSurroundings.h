/// The input for the choice of an editor: wish, display, terminal and the editors' directories
/// (Linux).
#ifndef VELTRANEDIALOG_EDITORSURROUNDINGS_H
#define VELTRANEDIALOG_EDITORSURROUNDINGS_H

#include <string>
#include <vector>

namespace Veltrane::ODBC {

struct EditorSurroundings {
    /// VELTRANE_DSN_EDITOR; empty if it is not set.
    std::string m_wish;
    bool m_hasDisplay = false;
    /// Why the terminal cannot be used; empty when it can.
    std::string m_terminalProblem;
    /// Directories to search for the programs, in order.
    std::vector<std::string> m_directories;
};

/// Returns the surroundings of this process. With raised privileges it ignores the environment.
EditorSurroundings LookAroundForEditors();

}  // namespace Veltrane::ODBC

#endif
