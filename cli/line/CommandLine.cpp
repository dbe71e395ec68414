#include "cli/line/CommandLine.h"

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

/// Parses the words of one command. Options can be anywhere, and abbreviated.
class Parser {
public:
    Parser(const CommandInfo& in_command, Words in_words)
        : m_command(in_command), m_words(std::move(in_words)) {
        m_line.m_command = in_command.m_id;
    }

    CommandLine Run() {
        bool areOptions = true;
        while (m_next < m_words.size()) {
            const std::string& word = m_words[m_next++];
            if (!areOptions || word.size() < 2 || word.front() != '-') {
                m_line.m_arguments.push_back(word);
            } else if (word == "--") {
                areOptions = false;
            } else if (word[1] == '-') {
                const std::size_t equals = word.find('=');
                const bool isJoined = equals != std::string::npos;
                Take(Find(word.substr(0, equals)), isJoined ? &word[equals + 1] : nullptr);
            } else {
                TakeLetters(word);
            }
        }
        CheckCounts();
        return std::move(m_line);
    }

private:
    /// Returns the option of a name, or the only one whose name begins so.
    const OptionInfo& Find(const std::string& in_name) const {
        std::vector<const OptionInfo*> found;
        std::vector<std::string_view> known;
        for (const OptionInfo& option : OPTIONS) {
            known.push_back(GetLongName(option));
            if ((option.m_commands & Bit(m_command.m_id)) == 0) continue;
            for (const std::string& name : SplitNames(option)) {
                if (name == in_name) return option;
                if (name.starts_with(in_name)) found.push_back(&option);
            }
        }
        if (found.size() != 1) RefuseUnknown("option ", in_name, known);
        return *found.front();
    }

    void TakeLetters(const std::string& in_word) {
        for (std::size_t at = 1; at < in_word.size(); ++at) {
            const OptionInfo& option = Find({'-', in_word[at]});
            const bool hasValue = !option.m_argument.empty();
            const bool isJoined = hasValue && at + 1 < in_word.size();
            Take(option, isJoined ? &in_word[at + 1] : nullptr);
            if (hasValue) return;
        }
    }

    /// @param in_joined  the value that is in the same word; null: none
    void Take(const OptionInfo& in_option, const char* in_joined) {
        const std::string name(GetLongName(in_option));
        const bool hasValue = !in_option.m_argument.empty();
        if (in_joined != nullptr && !hasValue) Refuse(name + " takes no value.");
        if (name == "--help") throw HelpRequest{MakeHelp(m_command)};
        std::vector<std::string>& values = m_line.m_options[GetLongName(in_option)];
        if (!hasValue) return;
        // An option is not used as a value, unless joined with "=".
        const bool isOption = m_next < m_words.size() && m_words[m_next].size() > 2 &&
                              m_words[m_next].starts_with("--");
        if (in_joined == nullptr && (isOption || m_next == m_words.size())) {
            Refuse(name + " needs a value: " + MakeOptionTitle(in_option) + ".");
        }
        if (!values.empty() && !in_option.m_isRepeatable) Refuse(name + " is given twice.");
        values.push_back(in_joined != nullptr ? in_joined : m_words[m_next++]);
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
    const Words m_words;
    std::size_t m_next = 0;
    CommandLine m_line;
};

}  // namespace

std::string CommandLine::Get(OptionName in_option, const std::string& in_default) const {
    const std::vector<std::string> values = GetAll(in_option);
    return values.empty() ? in_default : values.front();
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
