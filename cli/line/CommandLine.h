/// The command line, parsed by the table of commands.
#ifndef CLI_COMMANDLINE_H
#define CLI_COMMANDLINE_H

#include <map>
#include <string>
#include <vector>

#include "cli/line/CommandTable.h"

namespace Veltrane::Cli {

struct CommandLine {
    CommandId m_command = CommandId::List;
    std::vector<std::string> m_arguments;
    std::map<std::string_view, std::vector<std::string>> m_options;  ///< by the long name

    bool Has(OptionName in_option) const { return m_options.contains(in_option.Get()); }
    /// Returns the value of an option that can be given once.
    std::string Get(OptionName in_option, const std::string& in_default = {}) const;
    /// Returns the values of a repeatable option.
    std::vector<std::string> GetAll(OptionName in_option) const;
};

/// The text to print instead of running a command.
struct HelpRequest {
    std::string m_text;
};

/// Removes the words of the command and returns it; null if they begin none.
const CommandInfo* TakeCommand(std::vector<std::string>& io_words);

/// @param in_arguments  without the program's name
/// @throws HelpRequest for --help and --version
/// @throws CommandError EXIT_USAGE; its text repeats option names, but no values, which can be
///         misplaced passwords
CommandLine ParseCommandLine(std::vector<std::string> in_arguments);

}  // namespace Veltrane::Cli

#endif
