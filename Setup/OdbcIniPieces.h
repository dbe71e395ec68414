/// The bytes of an odbc.ini as the driver manager's reader cuts them into lines, which are called
/// pieces here: a longer line is several of them (OdbcIniText.h has the rules).
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

/// Positions are bytes from the start of the text; those that are given begin a piece.
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

    /// The most bytes of a piece, without its line end.
    static std::size_t GetMost(Rules in_rules) noexcept {
        return in_rules == Rules::IODBC ? std::numeric_limits<std::size_t>::max()
                                        : OdbcIniLine::MAX_LINE;
    }

    /// The end of a piece, its line end included.
    std::size_t EndOf(std::size_t in_begin) const {
        const std::size_t most = std::min(m_text.size() - in_begin, GetMost(m_rules));
        const char* const begin = m_text.data() + in_begin;
        const void* const found = std::memchr(begin, '\n', most);
        return in_begin +
               (found == nullptr
                    ? most
                    : static_cast<std::size_t>(static_cast<const char*>(found) - begin + 1));
    }
    /// What the reader sees of a piece.
    std::string_view Get(std::size_t in_begin) const {
        return OdbcIniLine::Seen(m_text.substr(in_begin, EndOf(in_begin) - in_begin), m_rules);
    }

    /// Where the reader refuses the text: at what is before the first section and is neither blank
    /// nor a comment. npos when it does not.
    std::size_t FindRefused() const;
    /// The first section header at or after a piece: of one with that name, if one is given. The
    /// end of the text without one.
    /// @param in_rules  where a header may begin
    std::size_t FindHeader(std::size_t in_from, Rules in_rules,
                           std::optional<std::string_view> in_name = std::nullopt) const;
    /// A section by other rules than the text's own, which are those for its first header.
    std::optional<Range> FindSection(std::string_view in_section, Rules in_rules) const;
    /// The value of a key in a section; nothing when the reader finds none.
    std::optional<std::string> FindValue(Range in_section, std::string_view in_key,
                                         Rules in_rules) const;

private:
    std::string_view m_text;
    Rules m_rules;
};

}  // namespace Veltrane::ODBC

#endif
