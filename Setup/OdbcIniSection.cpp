#include "Setup/OdbcIniSection.h"

#include <algorithm>

#include "PlatformAbstraction/base/Ascii.h"

namespace Veltrane::ODBC {

using Orska::Support::EqualsIgnoringCase;
using Orska::Support::FoldCase;

namespace {

/// A section with more lines than this gets an index of its keys.
constexpr std::size_t MAX_UNINDEXED = 64;

}  // namespace

void OdbcIniSection::IndexKeys() {
    if (!m_index.empty()) return;
    for (std::size_t i = 1; i < m_lines.size(); ++i) {
        if (!m_lines[i].m_isKey) continue;
        m_index[FoldCase(m_lines[i].m_key)].push_back(static_cast<std::uint32_t>(i));
    }
}

OdbcIniSection::Line* OdbcIniSection::Find(std::string_view in_key) {
    Line* found = nullptr;
    const auto isLive = [&found](Line& io_line) {
        if (found == nullptr || io_line.m_isLive) found = &io_line;
        return io_line.m_isLive;
    };
    if (m_lines.size() <= MAX_UNINDEXED) {
        for (Line& line : m_lines) {
            if (line.m_isKey && EqualsIgnoringCase(line.m_key, in_key) && isLive(line)) break;
        }
        return found;
    }
    IndexKeys();
    const auto lines = m_index.find(FoldCase(in_key));
    if (lines == m_index.end()) return nullptr;
    for (const std::uint32_t i : lines->second) {
        if (isLive(m_lines[i])) break;
    }
    return found;
}

std::size_t OdbcIniSection::EndOfLine(std::size_t in_piece) const {
    std::size_t end = in_piece + 1;
    while (end < m_lines.size() && !m_lines[end].m_isOwn) ++end;
    return end;
}

void OdbcIniSection::Remove(std::size_t in_piece) {
    const std::size_t end = EndOfLine(in_piece);
    for (std::size_t i = in_piece; i < end; ++i) m_lines[i].m_isLive = false;
}

void OdbcIniSection::Insert(const Line& in_line) {
    std::size_t last = m_lines.size() - 1;
    const auto isKept = [](const Line& in_each) {
        return in_each.m_isLive && in_each.m_isOwn && in_each.m_isContent;
    };
    while (last > 0 && !isKept(m_lines[last])) --last;
    const auto at = m_lines.begin() + static_cast<std::ptrdiff_t>(EndOfLine(last));
    if (std::any_of(at, m_lines.end(), [](const Line& in_each) { return in_each.m_isKey; })) {
        m_index.clear();  // rebuilt at the next search
    } else if (!m_index.empty()) {
        m_index[FoldCase(in_line.m_key)].push_back(
            static_cast<std::uint32_t>(at - m_lines.begin()));
    }
    m_lines.insert(at, in_line);
}

}  // namespace Veltrane::ODBC
