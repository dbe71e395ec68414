#include "VeltraneDialog/EditorChoice.h"

#include <utility>

#include "VeltraneDialog/RunnableProgram.h"

namespace Veltrane::ODBC {

namespace {

constexpr char DESKTOP_EDITOR[] = "veltrane-dsn-editor-desktop";
constexpr char TERMINAL_EDITOR[] = "veltrane-dsn-editor-terminal";

/// Adds the program to the choice, or the reason why it cannot be run.
void Consider(const std::string& in_program, EditorChoice& io_choice) {
    const std::string problem = WhyNotRunnable(in_program);
    if (problem.empty()) {
        io_choice.m_programs.push_back(in_program);
    } else {
        io_choice.m_problems += in_program + ": " + problem + ". ";
    }
}

void ConsiderInstalled(const std::string& in_name, const EditorSurroundings& in_surroundings,
                       EditorChoice& io_choice) {
    std::string problems;
    for (const std::string& directory : in_surroundings.m_directories) {
        std::string program = directory;
        program.append("/").append(in_name);
        const std::string problem = WhyNotRunnable(program);
        if (problem.empty()) {
            io_choice.m_programs.push_back(std::move(program));
            return;
        }
        problems.append(" ").append(directory).append(" (").append(problem).append(")");
    }
    io_choice.m_problems += in_name + " was looked for in" + problems + ". ";
}

}  // namespace

EditorChoice ChooseEditor(const EditorSurroundings& in_surroundings) {
    EditorChoice choice;
    const std::string& wish = in_surroundings.m_wish;
    if (wish == "desktop" || wish == "terminal") {
        ConsiderInstalled(wish == "desktop" ? DESKTOP_EDITOR : TERMINAL_EDITOR, in_surroundings,
                          choice);
        return choice;
    }
    if (!wish.empty()) {
        if (wish.front() == '/') {
            Consider(wish, choice);
        } else {
            choice.m_problems = "VELTRANE_DSN_EDITOR is \"" + wish +
                                "\"; it has to be desktop, terminal or an absolute path. ";
        }
        return choice;
    }
    if (in_surroundings.m_hasDisplay) {
        ConsiderInstalled(DESKTOP_EDITOR, in_surroundings, choice);
    } else {
        choice.m_problems += "There is no display: neither DISPLAY nor WAYLAND_DISPLAY is set. ";
    }
    if (in_surroundings.m_terminalProblem.empty()) {
        ConsiderInstalled(TERMINAL_EDITOR, in_surroundings, choice);
    } else {
        choice.m_problems += "There is no terminal: " + in_surroundings.m_terminalProblem + ". ";
    }
    return choice;
}

}  // namespace Veltrane::ODBC
