/// The lines of a section that is being edited (OdbcIniText). The first line is the header.
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
    /// A piece of a section that is being edited. A removed line keeps its place, so that its key
    /// can return there.
    struct Line {
        std::string_view m_text;  ///< owned by the OdbcIniText, as is the key
        std::string_view m_key;
        bool m_isKey = false;
        bool m_isContent = false;  ///< neither blank nor a comment
        bool m_isOwn = true;       ///< false: the rest of a line that the reader splits
        bool m_isLive = true;
    };
    std::vector<Line> m_lines;
    /// The lines of each folded key in file order; empty for a small section.
    std::unordered_map<std::string, std::vector<std::uint32_t>> m_index;
    bool m_isNew = false;     ///< not in the text
    bool m_isSpaced = false;  ///< has a blank line before it

    bool IsLive() const { return m_lines.front().m_isLive; }
    /// Returns the first live line with the key, else the first removed one; null when there is
    /// none.
    Line* Find(std::string_view in_key);
    /// Returns the end of the line that a piece belongs to.
    std::size_t EndOfLine(std::size_t in_piece) const;
    /// Removes a piece of a line and the pieces after it.
    void Remove(std::size_t in_piece);
    /// Inserts a new line after the last key.
    void Insert(const Line& in_line);
    void IndexKeys();
};

}  // namespace Veltrane::ODBC

#endif
