/// Splits the bytes of an odbc.ini into pieces, as the driver manager's reader does: a piece is a
/// line, or a part of a line that is too long (OdbcIniText.h has the rules).
#ifndef SETUP_ODBCINIPIECES_H
#define SETUP_ODBCINIPIECES_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "Setup/OdbcIniLine.h"

namespace Veltrane::ODBC {

/// Positions are byte offsets into the text. Every position passed in begins a piece.
class OdbcIniPieces {
public:
    using Rules = OdbcIniLine::Rules;

    struct Range {
        std::size_t m_begin;
        std::size_t m_end;
    };

    /// @param in_text  not owned
    OdbcIniPieces(std::string_view in_text, Rules in_rules) noexcept
        : m_text(in_text), m_rules(in_rules) {}

    /// Returns the largest size of a piece, in bytes without its line end.
    static std::size_t GetMost(Rules in_rules) noexcept {
        return in_rules == Rules::IODBC ? std::numeric_limits<std::size_t>::max()
                                        : OdbcIniLine::MAX_LINE;
    }

    /// Whether a line can end with this.
    bool EndsLine(char in_char) const noexcept {
        return in_char == '\n' ||
               (m_rules == Rules::IODBC &&
                OdbcIniLine::LineEnds(m_rules).find(in_char) != std::string_view::npos);
    }
    /// Returns the end of a piece, after its line end.
    std::size_t EndOf(std::size_t in_begin) const {
        if (m_rules == Rules::IODBC) return EndOfIodbc(in_begin);
        const std::size_t most = std::min(m_text.size() - in_begin, GetMost(m_rules));
        const char* const begin = m_text.data() + in_begin;
        const void* const found = std::memchr(begin, '\n', most);
        return in_begin +
               (found == nullptr
                    ? most
                    : static_cast<std::size_t>(static_cast<const char*>(found) - begin + 1));
    }
    /// Returns the part of a piece that the reader sees.
    std::string_view Get(std::size_t in_begin) const {
        return OdbcIniLine::Seen(m_text.substr(in_begin, EndOf(in_begin) - in_begin), m_rules);
    }

    /// Returns the position at which the reader refuses the text: the first piece before all
    /// sections that is neither blank nor a comment. npos when the reader accepts the text.
    std::size_t FindRefused() const;
    /// Returns the first section header at or after a piece, of the given name if there is one; the
    /// end of the text when there is none.
    /// @param in_rules  decide where a header can begin
    std::size_t FindHeader(std::size_t in_from, Rules in_rules,
                           std::optional<std::string_view> in_name = std::nullopt) const;
    /// Finds a section by other rules than the text's, which still apply to its first header.
    std::optional<Range> FindSection(std::string_view in_section, Rules in_rules) const;
    /// Returns the value of a key in a section; nothing when the reader finds none.
    std::optional<std::string> FindValue(Range in_section, std::string_view in_key,
                                         Rules in_rules) const;

private:
    std::size_t EndOfIodbc(std::size_t in_begin) const;

    std::string_view m_text;
    Rules m_rules;
};

}  // namespace Veltrane::ODBC

#endif
