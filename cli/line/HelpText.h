/// The texts of --help, made of the table of commands, at most 80 columns wide.
#ifndef CLI_HELPTEXT_H
#define CLI_HELPTEXT_H

#include <string>
#include <string_view>

#include "cli/line/CommandTable.h"

namespace Veltrane::Cli {

inline constexpr std::size_t MAX_COLUMNS = 80;

/// Calls a function for each line of a text of the table.
template <typename Function>
void ForEachLine(std::string_view in_text, const Function& in_function) {
    while (!in_text.empty()) {
        const std::size_t end = in_text.find('\n');
        in_function(in_text.substr(0, end));
        in_text.remove_prefix(end == std::string_view::npos ? in_text.size() : end + 1);
    }
}

/// Breaks a text at blanks; each line begins with `in_indent` blanks.
std::string Wrap(std::string_view in_text, std::size_t in_indent,
                 std::size_t in_columns = MAX_COLUMNS);

std::string MakeOverview();
std::string MakeHelp(const CommandInfo& in_command);
std::string MakeVersionText();

/// "veltrane-dsn set NAME [OPTION...]"
std::string MakeUsage(const CommandInfo& in_command);
/// "-p, --property KEY=VALUE"
std::string MakeOptionTitle(const OptionInfo& in_option);

}  // namespace Veltrane::Cli

#endif
