#include "cli/line/CommandLine.h"

#include <getopt.h>

#include "cli/line/HelpText.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Words = std::vector<std::string>;

[[noreturn]] void RefuseUnknown(const std::string& in_kind, const std::string& in_word,
                                const std::vector<std::string_view>& in_known) {
    const std::string_view near = FindNearWord(in_word, in_known);
    Refuse("There is no " + in_kind + in_word +
           (near.empty() ? ". " : ". Did you mean " + std::string(near) + "? ") +
           "Try veltrane-dsn --help.");
}

/// The first word is a command or begins one, so it is named; other words can be passwords.
[[noreturn]] void RefuseCommand(const Words& in_words) {
    const std::string last = in_words.empty() ? std::string() : in_words.back();
    if (last == "-h" || last == "--help") throw HelpRequest{MakeOverview()};
    if (last == "--version") throw HelpRequest{MakeVersionText()};
    const std::string first = in_words.empty() ? std::string() : in_words.front();
    const std::vector<std::string_view> second = GetWords(first);
    const bool isGroup = !first.empty() && !second.empty();
    const std::size_t at = isGroup ? 1 : 0;
    if (in_words.size() > at && !in_words[at].starts_with('-')) {
        RefuseUnknown("command " + (isGroup ? first + " " : std::string()), in_words[at],
                      isGroup ? second : GetWords());
    }
    Refuse("A command is missing" + (isGroup ? " after " + first + ": " + Join(second) : "") +
           ". Try veltrane-dsn --help.");
}

/// Parses the options of one command with the C library's parser.
class Parser {
public:
    Parser(const CommandInfo& in_command, Words in_words)
        : m_command(in_command), m_words(std::move(in_words)) {
        m_line.m_command = in_command.m_id;
        for (const OptionInfo& option : OPTIONS) {
            if ((option.m_commands & Bit(in_command.m_id)) == 0) continue;
            for (std::string& name : SplitNames(option)) m_names.emplace_back(name, &option);
        }
        for (std::size_t i = 0; i < m_names.size(); ++i) {
            const auto& [name, option] = m_names[i];
            const bool hasValue = !option->m_argument.empty();
            if (name.size() == 2) m_short += name.substr(1) + (hasValue ? ":" : "");
            if (name.size() == 2) continue;
            m_long.push_back(
                {name.c_str() + 2, hasValue ? 1 : 0, nullptr, FIRST + static_cast<int>(i)});
        }
        m_long.push_back({"help", 0, nullptr, 'h'});
        m_long.push_back({});
    }

    CommandLine Run() {
        std::string program = "veltrane-dsn";
        std::vector<char*> words{program.data()};
        for (std::string& word : m_words) words.push_back(word.data());
        const int count = static_cast<int>(words.size());
        words.push_back(nullptr);
        opterr = 0;
        optind = 0;  // start over
        for (int found = 0; (found = getopt_long(count, words.data(), m_short.c_str(),
                                                 m_long.data(), nullptr)) != -1;) {
            if (found == 'h') throw HelpRequest{MakeHelp(m_command)};
            if (found == IN_ORDER) {
                m_line.m_arguments.emplace_back(optarg);
            } else {
                Take(found, words[static_cast<std::size_t>(optind) - 1]);
            }
        }
        m_line.m_arguments.insert(m_line.m_arguments.end(), words.begin() + optind,
                                  words.end() - 1);
        CheckCounts();
        return std::move(m_line);
    }

private:
    static constexpr int IN_ORDER = 1;  ///< a word that is not an option
    static constexpr int FIRST = 1000;  ///< the first long name

    /// Returns the option of a number or a letter; null if there is none.
    const OptionInfo* Find(int in_found) const {
        if (in_found >= FIRST) return m_names[static_cast<std::size_t>(in_found - FIRST)].second;
        for (const auto& [name, option] : m_names) {
            if (name.size() == 2 && name[1] == in_found) return option;
        }
        return nullptr;
    }

    /// @param in_found  what the parser returned
    /// @param in_word  the last word that was consumed
    void Take(int in_found, const char* in_word) {
        const bool isRefused = in_found == '?' || in_found == ':';
        const OptionInfo* const option = Find(isRefused ? optopt : in_found);
        if (option == nullptr) {
            std::vector<std::string_view> known;
            for (const OptionInfo& info : OPTIONS) known.push_back(GetLongName(info));
            // Letters can be combined in one word, so that word is not used.
            const std::string word =
                optopt == 0 ? in_word : std::string("-") + static_cast<char>(optopt);
            RefuseUnknown("option ", word.substr(0, word.find('=')), known);
        }
        const std::string name(GetLongName(*option));
        const bool hasValue = !option->m_argument.empty();
        // mingw's getopt also returns ':' for a value that is not allowed.
        if (in_found == '?' || (in_found == ':' && !hasValue)) Refuse(name + " takes no value.");
        // An option is not used as a value, unless joined with "=".
        const bool isOption = hasValue && !isRefused && optarg == in_word && optarg[0] == '-' &&
                              optarg[1] == '-' && optarg[2] != '\0';
        if (in_found == ':' || isOption) {
            Refuse(name + " needs a value: " + MakeOptionTitle(*option) + ".");
        }
        std::vector<std::string>& values = m_line.m_options[GetLongName(*option)];
        if (hasValue && !values.empty() && !option->m_isRepeatable) {
            Refuse(name + " is given twice.");
        }
        if (hasValue) values.emplace_back(optarg);
    }

    void CheckCounts() const {
        const std::string_view shape = m_command.m_arguments;
        const std::size_t count = m_line.m_arguments.size();
        if (count == 0 && !shape.empty() && shape.front() != '[') {
            Refuse(std::string(shape == "FILE" ? "The file" : "The name of the DSN") +
                   " is missing. Usage: " + MakeUsage(m_command) + ".");
        }
        const bool areMany = shape.find("...") != std::string_view::npos;
        if (count > (shape.empty() ? 0U : 1U) && !areMany) Refuse("There are too many arguments.");
        if (m_line.Has("--user") && m_line.Has("--system")) {
            Refuse("--user and --system exclude each other.");
        }
    }

    const CommandInfo& m_command;
    Words m_words;
    std::vector<std::pair<std::string, const OptionInfo*>> m_names;
    std::string m_short = "-:h";  ///< keeps the order of words, and reports a missing value
    std::vector<option> m_long;
    CommandLine m_line;
};

}  // namespace

std::string CommandLine::Get(OptionName in_option, const std::string& in_default) const {
    const auto found = m_options.find(in_option.Get());
    return found == m_options.end() || found->second.empty() ? in_default : found->second.front();
}

std::vector<std::string> CommandLine::GetAll(OptionName in_option) const {
    const auto found = m_options.find(in_option.Get());
    return found == m_options.end() ? std::vector<std::string>() : found->second;
}

const CommandInfo* TakeCommand(std::vector<std::string>& io_words) {
    for (const CommandInfo& command : GetCommands()) {
        const std::size_t count = command.m_name.find(' ') == std::string_view::npos ? 1 : 2;
        if (io_words.size() < count) continue;
        const std::string name = io_words[0] + (count == 1 ? "" : " " + io_words[1]);
        if (name != command.m_name) continue;
        io_words.erase(io_words.begin(), io_words.begin() + static_cast<std::ptrdiff_t>(count));
        return &command;
    }
    return nullptr;
}

CommandLine ParseCommandLine(std::vector<std::string> in_arguments) {
    const CommandInfo* const command = TakeCommand(in_arguments);
    if (command == nullptr) RefuseCommand(in_arguments);
    return Parser(*command, std::move(in_arguments)).Run();
}

}  // namespace Veltrane::Cli
