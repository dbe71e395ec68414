#include "cli/generate/Generate.h"
#include "cli/line/CommandTable.h"
#include "cli/line/HelpText.h"

namespace Veltrane::Cli {

namespace {

/// Text for roff: what would be taken for a request, an escape or a hyphen is spelled out.
std::string Escape(std::string_view in_text) {
    std::string text;
    for (const char c : in_text) {
        if (c == '\\') {
            text += "\\e";
        } else if (c == '-') {
            text += "\\-";
        } else if (c == '\'') {
            text += "\\(aq";
        } else if (c == '~') {
            text += "\\(ti";
        } else {
            if (c == '.' && text.empty()) text += "\\&";
            text += c;
        }
    }
    return text;
}

void AddParagraphs(std::string_view in_text, std::string& io_page) {
    while (!in_text.empty()) {
        const std::size_t end = in_text.find('\n');
        const std::string_view line = in_text.substr(0, end);
        in_text.remove_prefix(end == std::string_view::npos ? in_text.size() : end + 1);
        const std::size_t tab = line.find('\t');
        if (tab == std::string_view::npos) {
            io_page += ".PP\n" + Escape(line) + "\n";
        } else {
            io_page += ".TP\n.B " + Escape(line.substr(0, tab)) + "\n" +
                       Escape(line.substr(tab + 1)) + "\n";
        }
    }
}

void AddCommand(const CommandInfo& in_command, std::string& io_page) {
    io_page += ".SS " + Escape(MakeUsage(in_command)) + "\n";
    AddParagraphs(in_command.m_text, io_page);
    for (const OptionInfo* option : GetOptionsOf(in_command.m_id)) {
        if (option->m_isHidden) continue;
        io_page +=
            ".TP\n.B " + Escape(MakeOptionTitle(*option)) + "\n" + Escape(option->m_help) + "\n";
    }
    io_page += ".PP\nExamples:\n.PP\n.nf\n.RS\n" + Escape(in_command.m_examples) + "\n.RE\n.fi\n";
}

}  // namespace

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

}  // namespace Veltrane::Cli
