/// veltrane-dsn-generate: prints the man page, made from the table of commands. Only for the build.
#include <iostream>

#include "cli/line/CommandTable.h"
#include "cli/line/HelpText.h"

namespace Veltrane::Cli {
namespace {

/// Escapes text for roff: requests, escapes and hyphens.
std::string Escape(std::string_view in_text) {
    std::string text;
    for (const char c : in_text) {
        constexpr const char* SPELLED[] = {"\\e", "\\-", "\\(aq", "\\(ti"};
        const std::size_t at = std::string_view("\\-'~").find(c);
        if (c == '.' && text.empty()) text += "\\&";
        text += at == std::string_view::npos ? std::string(1, c) : SPELLED[at];
    }
    return text;
}

void AddParagraphs(std::string_view in_text, std::string& io_page) {
    ForEachLine(in_text, [&](std::string_view in_line) {
        const std::size_t tab = in_line.find('\t');
        const bool isItem = tab != std::string_view::npos;
        io_page += isItem ? ".TP\n.B " + Escape(in_line.substr(0, tab)) + "\n" : ".PP\n";
        io_page += Escape(in_line.substr(isItem ? tab + 1 : 0)) + "\n";
    });
}

void AddCommand(const CommandInfo& in_command, std::string& io_page) {
    io_page += ".SS " + Escape(MakeUsage(in_command)) + "\n";
    AddParagraphs(in_command.m_text, io_page);
    for (const OptionInfo* option : GetOptionsOf(in_command.m_id)) {
        if (GetLongName(*option) == "--help") continue;
        io_page +=
            ".TP\n.B " + Escape(MakeOptionTitle(*option)) + "\n" + Escape(option->m_help) + "\n";
    }
    io_page += ".PP\nExamples:\n.PP\n.nf\n.RS\n" + Escape(in_command.m_examples) + "\n.RE\n.fi\n";
}

std::string MakeManualPage() {
    std::string page = ".TH VELTRANE\\-DSN 1 \"\" \"veltrane\\-dsn " VELTRANE_VERSION "\"\n";
    page += ".SH NAME\nveltrane\\-dsn \\- " + Escape(PROGRAM_SUMMARY) + "\n";
    page +=
        ".SH SYNOPSIS\n.B veltrane\\-dsn\n.I COMMAND\n[\\fIARGUMENT\\fR...] "
        "[\\fIOPTION\\fR...]\n.SH COMMANDS\n";
    for (const CommandInfo& command : GetCommands()) AddCommand(command, page);
    for (const ManualSection& section : GetManualSections()) {
        page += ".SH " + Escape(section.m_heading) + "\n";
        AddParagraphs(section.m_text, page);
    }
    return page + ".SH SEE ALSO\n.BR odbcinst (1),\n.BR isql (1)\n";
}

}  // namespace
}  // namespace Veltrane::Cli

int main() {
    std::cout << Veltrane::Cli::MakeManualPage() << std::flush;
    return std::cout ? 0 : 1;
}
