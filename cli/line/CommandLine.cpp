#include "cli/line/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>

#include "cli/line/HelpText.h"
#include "cli/system/CommandError.h"
#include "cli/system/NearWord.h"

namespace Veltrane::Cli {

namespace {

/// The parser's own storage for one command.
struct Parsed {
    const CommandInfo* m_info = nullptr;
    CLI::App* m_app = nullptr;
    bool m_isHelp = false;
    std::vector<std::string> m_arguments;
    struct Option {
        const OptionInfo* m_info;
        CLI::Option* m_option;
        std::vector<std::string> m_values;
    };
    std::deque<Option> m_options;  // addresses stay
};

[[noreturn]] void Refuse(const std::string& in_text) { throw CommandError(EXIT_USAGE, in_text); }

/// "driver" of "driver register" gets the parent that its commands share.
CLI::App* FindParent(CLI::App& io_root, std::string_view in_name) {
    const std::size_t blank = in_name.find(' ');
    if (blank == std::string_view::npos) return &io_root;
    const std::string group(in_name.substr(0, blank));
    try {
        return io_root.get_subcommand(group);
    } catch (const CLI::OptionNotFound&) {
        CLI::App* const parent = io_root.add_subcommand(group);
        parent->set_help_flag();
        parent->require_subcommand(0, 1);
        parent->fallthrough();  // for --help
        return parent;
    }
}

void AddOption(Parsed& io_parsed, const OptionInfo& in_info) {
    Parsed::Option& option = io_parsed.m_options.emplace_back(Parsed::Option{&in_info, {}, {}});
    const std::string names(in_info.m_names);
    if (in_info.m_argument.empty()) {
        option.m_option = io_parsed.m_app->add_flag(names);
    } else {
        option.m_option = io_parsed.m_app->add_option(names, option.m_values);
        option.m_option->allow_extra_args(false)->take_all();
    }
}

void AddCommand(CLI::App& io_root, const CommandInfo& in_info, Parsed& out_parsed) {
    const std::string_view name = in_info.m_name;
    out_parsed.m_info = &in_info;
    out_parsed.m_app =
        FindParent(io_root, name)->add_subcommand(std::string(name.substr(name.rfind(' ') + 1)));
    out_parsed.m_app->set_help_flag();
    out_parsed.m_app->add_flag("-h,--help", out_parsed.m_isHelp);
    for (const OptionInfo* option : GetOptionsOf(in_info.m_id)) AddOption(out_parsed, *option);
    if (!in_info.m_arguments.empty()) {
        out_parsed.m_app->add_option("arguments", out_parsed.m_arguments);
    }
}

/// Takes the words behind "--" away: none of them is an option.
std::vector<std::string> SplitAtMark(std::vector<std::string>& io_arguments) {
    const auto mark = std::find(io_arguments.begin(), io_arguments.end(), "--");
    if (mark == io_arguments.end()) return {};
    std::vector<std::string> behind(mark + 1, io_arguments.end());
    io_arguments.erase(mark, io_arguments.end());
    return behind;
}

/// The parser takes the next word for the value of "--uid="; here it means an empty value.
std::vector<std::string> SeparateEmptyValues(const std::vector<std::string>& in_arguments) {
    std::vector<std::string> arguments;
    for (const std::string& argument : in_arguments) {
        const bool isEmpty = argument.size() > 3 && argument.starts_with("--") &&
                             argument.find('=') == argument.size() - 1;
        arguments.push_back(isEmpty ? argument.substr(0, argument.size() - 1) : argument);
        if (isEmpty) arguments.emplace_back();
    }
    return arguments;
}

std::string Suggest(std::string_view in_word, const std::vector<std::string_view>& in_known) {
    const std::string_view near = FindNearWord(in_word, in_known);
    return near.empty() ? std::string() : " Did you mean " + std::string(near) + "?";
}

/// The names of the commands, or the second words of a group such as "driver".
std::vector<std::string_view> CommandNames(const std::string& in_group) {
    std::vector<std::string_view> names;
    for (const CommandInfo& command : GetCommands()) {
        if (in_group.empty()) {
            names.push_back(command.m_name.substr(0, command.m_name.find(' ')));
        } else if (command.m_name.starts_with(in_group + " ")) {
            names.push_back(command.m_name.substr(in_group.size() + 1));
        }
    }
    return names;
}

/// The group of commands that a line names without one of its commands; empty when there is none.
std::string OpenGroup(const CLI::App& in_root) {
    const std::vector<CLI::App*> parsed = in_root.get_subcommands();
    const bool isOpen = !parsed.empty() && !CommandNames(parsed.front()->get_name()).empty() &&
                        parsed.front()->get_subcommands().empty();
    return isOpen ? parsed.front()->get_name() : std::string();
}

std::string DescribeNoCommand(const std::string& in_group) {
    if (in_group.empty()) return "A command is missing.";
    std::string names;
    for (const std::string_view name : CommandNames(in_group)) {
        names.append(names.empty() ? "" : ", ").append(name);
    }
    return "A command is missing after \"" + in_group + "\": " + names + ".";
}

/// Names the option or the command among words that nothing takes. Other words may be passwords.
std::string DescribeExtras(const CLI::App& in_root, const std::string& in_first) {
    const std::vector<std::string> extras = in_root.remaining(true);
    const std::string group = OpenGroup(in_root);
    const bool isCommand =
        !group.empty() || (in_root.get_subcommands().empty() && extras.front() == in_first);
    if (isCommand && !extras.front().starts_with('-')) {
        return "There is no command \"" + group + (group.empty() ? "" : " ") + extras.front() +
               "\"." + Suggest(extras.front(), CommandNames(group));
    }
    std::vector<std::string_view> names;
    for (const OptionInfo& option : GetOptions()) names.push_back(GetLongName(option));
    for (const std::string& word : extras) {
        if (word.size() < 2 || word.front() != '-') continue;
        const std::string name = word.substr(0, word.find('='));
        return "There is no option " + name + " here." + Suggest(name, names);
    }
    return "There is an argument too many.";
}

std::string DescribeMissing(const CommandInfo& in_command) {
    return std::string(in_command.m_arguments == "FILE" ? "The file" : "The name of the DSN") +
           " is missing. Usage: " + MakeUsage(in_command) + ".";
}

void CheckCounts(const Parsed& in_parsed) {
    const std::string_view shape = in_parsed.m_info->m_arguments;
    const std::size_t count = in_parsed.m_arguments.size();
    const bool areMany = shape.find("...") != std::string_view::npos;
    if (count == 0 && !shape.empty() && shape.front() != '[') {
        Refuse(DescribeMissing(*in_parsed.m_info));
    }
    if (count > (shape.empty() ? 0U : 1U) && !areMany) Refuse("There is an argument too many.");
    for (const Parsed::Option& option : in_parsed.m_options) {
        const std::string name(GetLongName(*option.m_info));
        if (option.m_info->m_argument.empty()) {
            for (const std::string& result : option.m_option->results()) {
                if (result != "true") Refuse(name + " takes no value.");
            }
        } else if (option.m_option->count() > 1 && !option.m_info->m_isRepeatable) {
            Refuse(name + " is given twice.");
        }
    }
}

CommandLine MakeResult(const Parsed& in_parsed) {
    CommandLine line;
    line.m_command = in_parsed.m_info->m_id;
    line.m_arguments = in_parsed.m_arguments;
    for (const Parsed::Option& option : in_parsed.m_options) {
        if (option.m_option->count() == 0) continue;
        line.m_options[option.m_info->m_id] = option.m_values;
    }
    if (line.Has(OptionId::User) && line.Has(OptionId::System)) {
        Refuse("--user and --system exclude each other.");
    }
    return line;
}

/// What the root parser stands for when no command ran.
void RunRoot(CLI::App& io_root, bool& io_isHelp, bool& io_isVersion) {
    io_root.set_help_flag();
    // Otherwise a DSN that is named as a command is taken for it.
    io_root.require_subcommand(0, 1);
    io_root.add_flag("-h,--help", io_isHelp);
    io_root.add_flag("--version", io_isVersion);
}

std::string DescribeParseError(const CLI::ParseError& in_error, const CLI::App& in_root,
                               const std::string& in_first) {
    if (dynamic_cast<const CLI::ExtrasError*>(&in_error) != nullptr) {
        return DescribeExtras(in_root, in_first);
    }
    // The other errors name options only: nothing here is converted or validated.
    const std::string text = in_error.what();
    for (const OptionInfo& option : GetOptions()) {
        if (option.m_argument.empty() || !text.starts_with(std::string(GetLongName(option)) + ":"))
            continue;
        return std::string(GetLongName(option)) + " needs a value: " + MakeOptionTitle(option) +
               ".";
    }
    return text;
}

}  // namespace

std::string CommandLine::Get(OptionId in_id, const std::string& in_default) const {
    const auto found = m_options.find(in_id);
    return found == m_options.end() || found->second.empty() ? in_default : found->second.front();
}

std::vector<std::string> CommandLine::GetAll(OptionId in_id) const {
    const auto found = m_options.find(in_id);
    return found == m_options.end() ? std::vector<std::string>() : found->second;
}

CommandLine ParseCommandLine(std::vector<std::string> in_arguments) {
    CLI::App root;
    bool isHelp = false;
    bool isVersion = false;
    RunRoot(root, isHelp, isVersion);
    std::deque<Parsed> commands;
    for (const CommandInfo& info : GetCommands()) {
        AddCommand(root, info, commands.emplace_back());
    }
    const std::string first = in_arguments.empty() ? std::string() : in_arguments.front();
    const std::vector<std::string> behind = SplitAtMark(in_arguments);
    std::vector<std::string> arguments = SeparateEmptyValues(in_arguments);
    std::reverse(arguments.begin(), arguments.end());  // as the parser wants them
    try {
        root.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        Refuse(DescribeParseError(error, root, first) + " Try veltrane-dsn --help.");
    }
    if (isVersion) throw HelpRequest{MakeVersionText()};
    for (Parsed& parsed : commands) {
        if (!parsed.m_app->parsed()) continue;
        parsed.m_arguments.insert(parsed.m_arguments.end(), behind.begin(), behind.end());
        if (parsed.m_isHelp) throw HelpRequest{MakeHelp(*parsed.m_info)};
        CheckCounts(parsed);
        return MakeResult(parsed);
    }
    if (isHelp) throw HelpRequest{MakeOverview()};
    Refuse(DescribeNoCommand(OpenGroup(root)) + " Try veltrane-dsn --help.");
}

}  // namespace Veltrane::Cli
