#include "Setup/OdbcIniPieces.h"

#include "PlatformAbstraction/base/Ascii.h"

namespace Veltrane::ODBC {

using OdbcIniLine::HasIodbcName;
using OdbcIniLine::HeaderName;
using OdbcIniLine::IsComment;
using OdbcIniLine::KeyOf;
using OdbcIniLine::LineEnds;
using OdbcIniLine::ValueOf;
using Orska::Support::EqualsIgnoringCase;
using Orska::Support::IsAsciiBlank;
using Orska::Support::ToLowerAscii;
using Orska::Support::TrimLeft;

std::size_t OdbcIniPieces::EndOfIodbc(std::size_t in_begin) const {
    const std::size_t found = m_text.find_first_of(LineEnds(m_rules), in_begin);
    if (found == std::string_view::npos) return m_text.size();
    return found + (m_text.substr(found, 2) == "\r\n" ? 2 : 1);
}

std::size_t OdbcIniPieces::FindRefused() const {
    if (m_rules == Rules::IODBC) return std::string::npos;
    for (std::size_t at = 0; at < m_text.size(); at = EndOf(at)) {
        const std::string_view piece = Get(at);
        if (piece.starts_with('[')) break;
        const std::string_view content = TrimLeft(piece);
        if (!content.empty() && !IsComment(content.front())) return at;
    }
    return std::string::npos;
}

/// Jumps from bracket to bracket, because most of a large file does not matter.
std::size_t OdbcIniPieces::FindHeader(std::size_t in_from, Rules in_rules,
                                      std::optional<std::string_view> in_name) const {
    const std::size_t most = GetMost(m_rules);
    const std::string_view name = in_name.value_or(std::string_view());
    const std::size_t size = name.size();
    const char last = name.empty() ? '[' : ToLowerAscii(name.back());
    std::size_t line = in_from;
    std::size_t seen = in_from;
    for (std::size_t bracket = m_text.find('[', in_from); bracket != std::string_view::npos;
         bracket = m_text.find('[', bracket + 1)) {
        // Names share their beginnings more often than their ends, so the end is compared first.
        const std::size_t end = bracket + size;
        if (end < m_text.size() && ToLowerAscii(m_text[end]) != last &&
            !IsAsciiBlank(m_text[bracket + 1])) {
            continue;
        }
        const std::size_t lineEnd =
            m_text.substr(seen, bracket - seen).find_last_of(LineEnds(m_rules));
        if (lineEnd != std::string_view::npos) line = seen + lineEnd + 1;
        seen = bracket;
        const std::size_t piece = line + (bracket - line) / most * most;
        const std::string_view before = m_text.substr(piece, bracket - piece);
        const bool isFirst = in_rules == Rules::APPENDED_FILE
                                 ? before.empty()
                                 : std::all_of(before.begin(), before.end(), IsAsciiBlank<char>);
        if (!isFirst || (in_rules == Rules::IODBC && !HasIodbcName(Get(piece)))) continue;
        if (!in_name || EqualsIgnoringCase(HeaderName(Get(piece)), name)) return piece;
    }
    return m_text.size();
}

std::optional<OdbcIniPieces::Range> OdbcIniPieces::FindSection(std::string_view in_section,
                                                               Rules in_rules) const {
    std::size_t at = FindHeader(0, m_rules);
    if (at < m_text.size() && !EqualsIgnoringCase(HeaderName(Get(at)), in_section)) {
        at = FindHeader(EndOf(at), in_rules, in_section);
    }
    if (at == m_text.size()) return std::nullopt;
    return Range{at, FindHeader(EndOf(at), in_rules)};
}

std::optional<std::string> OdbcIniPieces::FindValue(Range in_section, std::string_view in_key,
                                                    Rules in_rules) const {
    for (std::size_t at = EndOf(in_section.m_begin); at < in_section.m_end; at = EndOf(at)) {
        const std::string_view piece = Get(at);
        const std::optional<std::string_view> key = KeyOf(piece, in_rules);
        if (key && EqualsIgnoringCase(*key, in_key)) {
            return ValueOf(piece, in_rules, EndsLine(m_text[EndOf(at) - 1]));
        }
    }
    return std::nullopt;
}

}  // namespace Veltrane::ODBC
