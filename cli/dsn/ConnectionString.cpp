#include "cli/dsn/ConnectionString.h"

#include <vector>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::Trim;
using Orska::Support::TrimLeft;

class Parser {
public:
    explicit Parser(std::string_view in_text) : m_text(in_text) {}

    Entries Run() {
        for (;;) {
            SkipBlanks();
            if (m_at == m_text.size()) return Entries(m_entries);
            if (m_text[m_at] == ';') {
                ++m_at;
                continue;
            }
            ParseEntry();
        }
    }

private:
    void ParseEntry() {
        const std::size_t equals = m_text.find_first_of("=;", m_at);
        if (equals == std::string_view::npos || m_text[equals] == ';') Fail("a key without \"=\"");
        const std::string key(Trim(m_text.substr(m_at, equals - m_at)));
        if (key.empty()) Fail("a value without a key");
        m_at = equals + 1;
        SkipBlanks();
        const bool isQuoted = m_at < m_text.size() && m_text[m_at] == '{';
        m_entries.emplace_back(key, isQuoted ? QuotedValue() : PlainValue());
    }

    std::string PlainValue() {
        const std::size_t end = std::min(m_text.find(';', m_at), m_text.size());
        const std::string_view value = Trim(m_text.substr(m_at, end - m_at));
        m_at = end;
        return std::string(value);
    }

    std::string QuotedValue() {
        std::string value;
        const std::size_t begin = m_at;
        for (++m_at; m_at < m_text.size(); ++m_at) {
            const bool isBrace = m_text[m_at] == '}';
            const bool isDoubled = isBrace && m_text.substr(m_at + 1, 1) == "}";
            if (isBrace && !isDoubled) {
                ++m_at;
                SkipBlanks();
                if (m_at < m_text.size() && m_text[m_at] != ';') {
                    Fail("text after a closing brace; a brace in a value is doubled");
                }
                return value;
            }
            if (isDoubled) ++m_at;
            value += m_text[m_at];
        }
        m_at = begin;
        Fail("an opening brace without its closing one");
    }

    void SkipBlanks() { m_at = m_text.size() - TrimLeft(m_text.substr(m_at)).size(); }

    [[noreturn]] void Fail(const char* in_reason) const {
        Refuse("The connection string has, at byte " + std::to_string(m_at + 1) + ", " + in_reason +
               ".");
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::vector<Entry> m_entries;
};

}  // namespace

Entries ParseConnectionString(std::string_view in_text) { return Parser(in_text).Run(); }

std::string FormatConnectionString(const Entries& in_entries) {
    std::string text;
    for (const auto& [key, value] : in_entries) {
        // Not every driver knows braces, so only what would be read wrongly gets them.
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
