#include <algorithm>
#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/dsn/DriverRegistry.h"
#include "cli/system/Input.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// The shells send the typed text as it is quoted there.
std::string FoldUnquoted(std::string_view in_text) {
    std::string text = FoldName(in_text);
    for (const char quote : {'\\', '\'', '"'}) std::erase(text, quote);
    return text;
}

/// Prints a word with its description, if it begins with the typed text.
void Offer(std::string_view in_word, std::string_view in_typed, std::string_view in_text = {}) {
    if (!FoldUnquoted(in_word).starts_with(FoldUnquoted(in_typed))) return;
    std::cout << in_word << '\t' << in_text << '\n';
}

/// @param in_option  "--option=" if the typed text begins with it
void OfferValues(ValueKind in_kind, Scope in_scope, const std::string& in_option,
                 std::string_view in_typed) {
    std::vector<std::string> words;
    if (in_kind == ValueKind::Dsn) words = GetDsnNames(DsnStore(in_scope).Read());
    if (in_kind == ValueKind::Driver) words = DriverRegistry().GetNames();
    if (in_kind == ValueKind::Format) words = {"json", "ini"};
    for (const std::string& word : words) Offer(in_option + word, in_typed);
    // The shells know these.
    if (in_kind == ValueKind::File) std::cout << ":files\n";
    if (in_kind == ValueKind::Variable) std::cout << ":variables\n";
}

void OfferFor(const CommandInfo& in_command, const std::vector<std::string>& in_words,
              std::string_view in_typed) {
    const bool isSystem = std::find(in_words.begin(), in_words.end(), "--system") != in_words.end();
    const Scope scope = isSystem ? Scope::System : Scope::User;
    const std::string previous = in_words.empty() ? std::string() : in_words.back();
    ValueKind kind = in_command.m_kind;
    bool isOption = in_typed.starts_with('-');
    const std::string joined(in_typed.substr(0, isOption ? in_typed.find('=') + 1 : 0));
    std::vector<std::pair<std::string, std::string_view>> options;
    for (const OptionInfo* option : GetOptionsOf(in_command.m_id)) {
        for (std::string& name : SplitNames(*option)) {
            if ((name == previous || name + "=" == joined) && !option->m_argument.empty()) {
                kind = option->m_kind;
                isOption = false;
            }
            options.emplace_back(std::move(name), option->m_help);
        }
    }
    if (!isOption) return OfferValues(kind, scope, joined, in_typed);
    for (const auto& [name, text] : options) Offer(name, in_typed, text);
}

}  // namespace

ExitCode CompleteWords() {
    std::vector<std::string> words;
    ForEachLine(ReadText({}), [&words](std::string_view in_line) { words.emplace_back(in_line); });
    if (words.empty()) return EXIT_DONE;
    const std::string typed = std::move(words.back());
    words.pop_back();
    if (const CommandInfo* const command = TakeCommand(words)) {
        OfferFor(*command, words, typed);
    } else if (words.size() < 2) {
        const std::string group = words.empty() ? std::string() : words.front();
        std::vector<std::string_view> offered = GetWords(group);
        if (typed.starts_with('-')) offered = {"--help", "--version"};
        for (const std::string_view word : offered) Offer(word, typed);
    }
    return EXIT_DONE;
}

}  // namespace Veltrane::Cli
