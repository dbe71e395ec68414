/// Words in sentences for people: lists, quotes, and what somebody meant who has mistyped one.
#ifndef CLI_WORDS_H
#define CLI_WORDS_H

#include <span>
#include <string>
#include <string_view>

namespace Veltrane::Cli {

template <typename Texts>
std::string Join(const Texts& in_texts, std::string_view in_between = ", ") {
    std::string text;
    for (const std::string_view each : in_texts) {
        (text.empty() ? text : text.append(in_between)).append(each);
    }
    return text;
}

inline std::string Quote(const std::string& in_text) { return '"' + in_text + '"'; }

/// The known word that differs from a word by one letter, in longer words by two: one too many, one
/// missing or another one. ASCII case does not count.
/// @return empty when there is none, or when the word is a known one
std::string_view FindNearWord(std::string_view in_word, std::span<const std::string_view> in_known);

}  // namespace Veltrane::Cli

#endif
