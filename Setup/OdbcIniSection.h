/// The lines of a section of an odbc.ini that is being edited (OdbcIniText). The first one is the
/// header.
#ifndef SETUP_ODBCINISECTION_H
#define SETUP_ODBCINISECTION_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Veltrane::ODBC {

struct OdbcIniSection {
    /// A reader's line of a section that is being edited. One that was taken away stays as a place
    /// to return to.
    struct Line {
        std::string m_text;
        std::string m_key;  ///< folded, as the reader compares it
        bool m_isKey = false;
        bool m_isContent = false;  ///< neither blank nor a comment
        bool m_isOwn = true;       ///< false: the rest of a line that the reader has cut
        bool m_isLive = true;
    };
    std::vector<Line> m_lines;
    /// The lines with a key, in their order, for a section with many; else empty.
    std::unordered_map<std::string, std::vector<std::uint32_t>> m_index;
    bool m_isNew = false;     ///< not in the text
    bool m_isSpaced = false;  ///< has a blank line before it

    bool IsLive() const { return m_lines.front().m_isLive; }
    /// The first line with the folded key that is there, or that was taken away; null without one.
    Line* Find(const std::string& in_key, bool in_isLive);
    /// Where the line ends of which a piece is one.
    std::size_t EndOfLine(std::size_t in_piece) const;
    /// Takes a line away from one of its pieces on.
    void Remove(std::size_t in_piece);
    /// Puts a new line after the last key.
    void Insert(Line in_line);
    void IndexKeys();
};

}  // namespace Veltrane::ODBC

#endif
