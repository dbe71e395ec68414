#include "cli/dsn/ConnectionString.h"

#include <vector>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::Trim;
using Orska::Support::TrimLeft;

[[noreturn]] void Fail(std::size_t in_at, const char* in_reason) {
    Refuse("The connection string has, at byte " + std::to_string(in_at + 1) + ", " + in_reason +
           ".");
}

std::size_t SkipBlanks(std::string_view in_text, std::size_t in_at) {
    return in_text.size() - TrimLeft(in_text.substr(in_at)).size();
}

/// @param io_at  the opening brace; then the end of the entry
std::string TakeQuoted(std::string_view in_text, std::size_t& io_at) {
    std::string value;
    for (std::size_t at = io_at + 1; at < in_text.size(); ++at) {
        const bool isBrace = in_text[at] == '}';
        const bool isDoubled = isBrace && in_text.substr(at + 1, 1) == "}";
        if (isBrace && !isDoubled) {
            io_at = SkipBlanks(in_text, at + 1);
            if (io_at == in_text.size() || in_text[io_at] == ';') return value;
            Fail(io_at, "text after a closing brace; a brace in a value is doubled");
        }
        if (isDoubled) ++at;
        value += in_text[at];
    }
    Fail(io_at, "an opening brace without its closing one");
}

}  // namespace

Entries ParseConnectionString(std::string_view in_text) {
    std::vector<Entry> entries;
    for (std::size_t at = 0; (at = SkipBlanks(in_text, at)) < in_text.size();) {
        const std::size_t equals = std::min(in_text.find_first_of("=;", at), in_text.size());
        const std::string key(Trim(in_text.substr(at, equals - at)));
        if (equals == at && in_text[at] == ';') {
            ++at;
            continue;
        }
        if (equals == in_text.size() || in_text[equals] == ';') Fail(at, "a key without \"=\"");
        if (key.empty()) Fail(at, "a value without a key");
        at = SkipBlanks(in_text, equals + 1);
        if (in_text.substr(at, 1) == "{") {
            entries.emplace_back(key, TakeQuoted(in_text, at));
        } else {
            const std::size_t end = std::min(in_text.find(';', at), in_text.size());
            entries.emplace_back(key, Trim(in_text.substr(at, end - at)));
            at = end;
        }
    }
    return Entries(entries);
}

std::string FormatConnectionString(const Entries& in_entries) {
    std::string text;
    for (const auto& [key, value] : in_entries) {
        // Some drivers do not know braces, so only values that need them get them.
        const bool isPlain =
            value.empty() || (value.find(';') == std::string::npos && value.front() != '{' &&
                              value.front() != ' ' && value.back() != ' ');
        text += key + "=" + (isPlain ? value : "{" + DoubleBraces(value) + "}") + ";";
    }
    return text;
}

std::string DoubleBraces(const std::string& in_value) {
    std::string text;
    for (const char byte : in_value) text.append(byte == '}' ? 2 : 1, byte);
    return text;
}

}  // namespace Veltrane::Cli
