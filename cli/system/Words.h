/// Words in messages: lists, quotes, and suggestions for mistyped words.
#ifndef CLI_WORDS_H
#define CLI_WORDS_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrane::Cli {

template <typename Texts>
std::string Join(const Texts& in_texts, std::string_view in_between = ", ") {
    std::string text;
    for (const std::string_view each : in_texts) {
        (text.empty() ? text : text.append(in_between)).append(each);
    }
    return text;
}

/// Returns the first few names, short enough for one line: "a, b and 9 more".
std::string JoinFirst(const std::vector<std::string>& in_names);

inline std::string Quote(const std::string& in_text) { return '"' + in_text + '"'; }

/// Calls a function for each line of a text.
template <typename Function>
void ForEachLine(std::string_view in_text, const Function& in_function) {
    while (!in_text.empty()) {
        const std::size_t end = in_text.find('\n');
        in_function(in_text.substr(0, end));
        in_text.remove_prefix(end == std::string_view::npos ? in_text.size() : end + 1);
    }
}

/// Returns the known word that differs by one letter, in longer words by two: one too many, one
/// missing or a wrong one. Ignores ASCII case.
/// @return empty if there is none, or if the word is known
std::string_view FindNearWord(std::string_view in_word, std::span<const std::string_view> in_known);

}  // namespace Veltrane::Cli

#endif
