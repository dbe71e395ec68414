/// Finds what somebody meant who has mistyped a word.
#ifndef CLI_NEARWORD_H
#define CLI_NEARWORD_H

#include <span>
#include <string_view>

namespace Veltrane::Cli {

/// The known word that differs from a word by one letter, in longer words by two: one too many, one
/// missing or another one. ASCII case does not count.
/// @return empty when there is none, or when the word is a known one
std::string_view FindNearWord(std::string_view in_word, std::span<const std::string_view> in_known);

}  // namespace Veltrane::Cli

#endif
