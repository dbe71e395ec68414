#include "cli/line/HelpText.h"

#include "PlatformAbstraction/base/Ascii.h"

namespace Veltrane::Cli {

namespace {

constexpr std::size_t INDENT = 2;
constexpr std::size_t COMMAND_COLUMN = 22;
constexpr std::size_t OPTION_INDENT = 6;

}  // namespace

std::string Wrap(std::string_view in_text, std::size_t in_indent) {
    constexpr std::size_t MAX_COLUMNS = 80;
    const std::string indent(in_indent, ' ');
    std::string text;
    std::string line = indent;
    while (!in_text.empty()) {
        const std::size_t end = in_text.find(' ');
        const std::string_view word = in_text.substr(0, end);
        in_text.remove_prefix(end == std::string_view::npos ? in_text.size() : end + 1);
        const bool isFirst = line.size() == in_indent;
        if (!isFirst && line.size() + 1 + word.size() > MAX_COLUMNS) {
            text += line + "\n";
            line = indent;
        } else if (!isFirst) {
            line += ' ';
        }
        line += word;
    }
    return text + line + "\n";
}

std::string MakeUsage(const CommandInfo& in_command) {
    std::string usage = "veltrane-dsn " + std::string(in_command.m_name);
    if (!in_command.m_arguments.empty()) usage += " " + std::string(in_command.m_arguments);
    return usage + " [OPTION...]";
}

std::string MakeOptionTitle(const OptionInfo& in_option) {
    std::string title(in_option.m_names);
    const std::size_t comma = title.find(',');
    if (comma != std::string::npos) title.insert(comma + 1, " ");
    if (!in_option.m_argument.empty()) title += " " + std::string(in_option.m_argument);
    return title;
}

std::string MakeOverview() {
    std::string text = "Usage: veltrane-dsn COMMAND [ARGUMENT...] [OPTION...]\n\n";
    text += Wrap("veltrane-dsn: " + std::string(PROGRAM_SUMMARY) + ".", 0);
    text += "\nCommands:\n";
    for (const CommandInfo& command : GetCommands()) {
        std::string line(INDENT, ' ');
        line += command.m_name;
        line.resize(COMMAND_COLUMN, ' ');
        text += line + std::string(command.m_summary) + "\n";
    }
    text += "\nveltrane-dsn COMMAND --help explains a command, with examples.\n\nExit codes:\n";
    for (const ManualSection& section : GetManualSections()) {
        if (section.m_heading != "EXIT CODES") continue;
        ForEachLine(section.m_text, [&](std::string_view in_line) {
            std::string line(in_line);
            line.replace(line.find('\t'), 1, "  ");
            text += "  " + line + "\n";
        });
    }
    return text;
}

std::string MakeHelp(const CommandInfo& in_command) {
    std::string summary(in_command.m_summary);
    summary.front() = Orska::Support::ToUpperAscii(summary.front());
    std::string text = "Usage: " + MakeUsage(in_command) + "\n\n" + summary + ".\n\n";
    ForEachLine(in_command.m_text, [&](std::string_view in_line) { text += Wrap(in_line, 0); });
    text += "\nOptions:\n";
    for (const OptionInfo* option : GetOptionsOf(in_command.m_id)) {
        text += "  " + MakeOptionTitle(*option) + "\n" + Wrap(option->m_help, OPTION_INDENT);
    }
    text += "\nExamples:\n";
    ForEachLine(in_command.m_examples,
                [&](std::string_view in_line) { text += "  " + std::string(in_line) + "\n"; });
    return text;
}

std::string MakeVersionText() { return "veltrane-dsn " VELTRANE_VERSION "\n"; }

}  // namespace Veltrane::Cli
