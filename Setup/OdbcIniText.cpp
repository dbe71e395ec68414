#include "Setup/OdbcIniText.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace Veltrane::ODBC {

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view BLANKS = " \t\n\v\f\r";

bool IsBlank(char in_char) { return in_char == ' ' || (in_char >= '\t' && in_char <= '\r'); }

bool IsComment(char in_char) { return in_char == '#' || in_char == ';'; }

char Fold(char in_char) {
    return in_char >= 'A' && in_char <= 'Z' ? static_cast<char>(in_char + 32) : in_char;
}

bool IsLetterOrDigit(char in_char) {
    const char folded = Fold(in_char);
    return (folded >= 'a' && folded <= 'z') || (in_char >= '0' && in_char <= '9');
}

bool IsSameName(std::string_view in_left, std::string_view in_right) {
    return std::equal(in_left.begin(), in_left.end(), in_right.begin(), in_right.end(),
                      [](char in_a, char in_b) { return Fold(in_a) == Fold(in_b); });
}

std::string_view TrimLeft(std::string_view in_text) {
    while (!in_text.empty() && IsBlank(in_text.front())) in_text.remove_prefix(1);
    return in_text;
}

std::string_view Trim(std::string_view in_text) {
    in_text = TrimLeft(in_text);
    while (!in_text.empty() && IsBlank(in_text.back())) in_text.remove_suffix(1);
    return in_text;
}

std::string_view HeaderName(std::string_view in_piece) {
    in_piece = TrimLeft(in_piece).substr(1);
    return Trim(in_piece.substr(0, in_piece.find(']')));
}

std::string_view KeyName(std::string_view in_piece) {
    return Trim(in_piece.substr(0, in_piece.find('=')));
}

/// A byte of a UTF-8 character, but not its first.
bool IsContinuation(char in_char) { return (static_cast<unsigned char>(in_char) & 0xC0) == 0x80; }

/// Control characters, and U+0080 to U+009F as UTF-8 spells them.
bool HasControlCharacter(std::string_view in_text) {
    for (std::size_t i = 0; i < in_text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(in_text[i]);
        if (byte < 0x20 || byte == 0x7F) return true;
        if (byte == 0xC2 && i + 1 < in_text.size()) {
            const auto next = static_cast<unsigned char>(in_text[i + 1]);
            if (next >= 0x80 && next < 0xA0) return true;
        }
    }
    return false;
}

std::string KeyValueText(std::string_view in_piece) {
    const std::size_t equals = in_piece.find('=');
    if (equals == std::string_view::npos) return {};
    return std::string(Trim(in_piece.substr(equals + 1)));
}

constexpr std::string_view IODBC_LINE_ENDS("\r\x1A\0", 3);
constexpr std::string_view QUOTES = "'\"";

/// Whether what looks like a section header is one to iODBC.
bool HasIodbcName(std::string_view in_piece) {
    return in_piece.find(']') != std::string_view::npos && !HeaderName(in_piece).empty();
}

/// A line that begins with a blank goes on with the line before.
bool IsIodbcKeyLine(std::string_view in_piece) {
    return !IsBlank(in_piece.front()) && in_piece.front() != '[' &&
           in_piece.find('=') != std::string_view::npos;
}

/// A key as iODBC compares it.
std::string_view Unquote(std::string_view in_key) {
    in_key.remove_prefix(std::min(in_key.find_first_not_of(QUOTES), in_key.size()));
    return in_key.substr(0, in_key.find_first_of(QUOTES));
}

/// A vertical tab is no blank to iODBC.
constexpr std::string_view IODBC_BLANKS = " \t\n\f\r";

std::string_view TrimIodbcValue(std::string_view in_value) {
    in_value.remove_prefix(std::min(in_value.find_first_not_of(IODBC_BLANKS), in_value.size()));
    return in_value.substr(0, in_value.find_last_not_of(IODBC_BLANKS) + 1);
}

/// How much of a trimmed value iODBC reads: what follows is a comment.
std::size_t IodbcValueSize(std::string_view in_value) {
    char quote = '\0';
    for (std::size_t i = 0; i < in_value.size(); ++i) {
        const char c = in_value[i];
        if (quote != '\0') {
            if (c == quote) quote = '\0';
        } else if (QUOTES.find(c) != std::string_view::npos) {
            quote = c;
        } else if (IsComment(c) &&
                   (i == 0 || IODBC_BLANKS.find(in_value[i - 1]) != std::string_view::npos)) {
            return TrimIodbcValue(in_value.substr(0, i)).size();
        }
    }
    return in_value.size();
}

bool HasOuterBlank(std::string_view in_text) { return Trim(in_text).size() != in_text.size(); }

/// Whether the reader's line would end within the text.
bool HasLineEnd(std::string_view in_text, OdbcIniText::Rules in_rules) {
    constexpr std::string_view LINE_ENDS("\n\0", 2);
    const bool isIodbc = in_rules == OdbcIniText::Rules::IODBC;
    return in_text.find_first_of(LINE_ENDS) != std::string_view::npos ||
           (isIodbc && in_text.find_first_of(IODBC_LINE_ENDS) != std::string_view::npos);
}

}  // namespace

OdbcIniText::OdbcIniText(std::string in_bytes, Rules in_rules)
    : m_text(std::move(in_bytes)), m_rules(in_rules) {
    if (m_rules == Rules::IODBC) m_maxPiece = std::numeric_limits<std::size_t>::max();
    if (m_text.starts_with(BYTE_ORDER_MARK)) m_text.erase(0, BYTE_ORDER_MARK.size());
    const std::size_t lineEnd = m_text.find('\n');
    if (lineEnd != std::string::npos && lineEnd > 0 && m_text[lineEnd - 1] == '\r') {
        m_lineEnd = "\r\n";
    }
    m_isReadable = FindRefused() == std::string::npos;
    m_firstSection = FindHeader(0, m_rules);
}

/// Where the reader refuses the text: at what stands before the first section and is neither blank
/// nor a comment. npos when it does not.
std::size_t OdbcIniText::FindRefused() const {
    if (m_rules == Rules::IODBC) return std::string::npos;
    for (std::size_t at = 0; at < m_text.size(); at = PieceEnd(at)) {
        const std::string_view piece = Piece(at);
        if (piece.starts_with('[')) break;
        const std::string_view content = TrimLeft(piece);
        if (!content.empty() && !IsComment(content.front())) return at;
    }
    return std::string::npos;
}

/// The first header must begin in the first column, the others need not: when the first section
/// goes, the blanks before the next header go too.
void OdbcIniText::MendFirstHeader() {
    const std::size_t at = FindRefused();
    if (at == std::string::npos) return;
    const std::size_t content = m_text.find_first_not_of(BLANKS, at);
    if (m_text[content] != '[') return;
    // A header that the reader cuts must stay cut where it was.
    const std::size_t end = PieceEnd(at);
    if (end < m_text.size() && m_text[end - 1] != '\n') m_text.insert(end, m_lineEnd);
    m_text.erase(at, content - at);
}

/// The end of the reader's line that begins here, its line end included.
std::size_t OdbcIniText::PieceEnd(std::size_t in_begin) const {
    return LineEnd(in_begin, in_begin + std::min(m_text.size() - in_begin, m_maxPiece));
}

/// What the reader sees of the line that begins here.
std::string_view OdbcIniText::Piece(std::size_t in_begin) const {
    const std::string_view piece(m_text.data() + in_begin, PieceEnd(in_begin) - in_begin);
    return piece.substr(
        0, m_rules == Rules::IODBC ? piece.find_first_of(IODBC_LINE_ENDS) : piece.find('\0'));
}

std::size_t OdbcIniText::LineEnd(std::size_t in_begin, std::size_t in_limit) const {
    const char* const begin = m_text.data() + in_begin;
    const void* const found = std::memchr(begin, '\n', in_limit - in_begin);
    return found == nullptr
               ? in_limit
               : static_cast<std::size_t>(static_cast<const char*>(found) - m_text.data()) + 1;
}

/// The beginning of the first section header at or after the beginning of a reader's line. Jumps
/// from bracket to bracket, because most of a large file is of no interest.
std::size_t OdbcIniText::FindHeader(std::size_t in_from, Rules in_rules) const {
    const std::string_view text = m_text;
    std::size_t line = in_from;
    for (std::size_t from = in_from;;) {
        const std::size_t bracket = text.find('[', from);
        if (bracket == std::string_view::npos) return text.size();
        const std::size_t lineEnd = text.substr(from, bracket - from).rfind('\n');
        if (lineEnd != std::string_view::npos) line = from + lineEnd + 1;
        const std::size_t piece = line + (bracket - line) / m_maxPiece * m_maxPiece;
        const std::string_view before = text.substr(piece, bracket - piece);
        const bool isFirst = in_rules == Rules::APPENDED_FILE
                                 ? before.empty()
                                 : std::all_of(before.begin(), before.end(), IsBlank);
        if (isFirst && (in_rules != Rules::IODBC || HasIodbcName(Piece(piece)))) return piece;
        from = bracket + 1;
    }
}

/// @param in_from  where a section begins, or npos
std::optional<OdbcIniText::Range> OdbcIniText::FindSectionFrom(std::size_t in_from,
                                                               std::string_view in_section,
                                                               Rules in_rules) const {
    for (std::size_t at = in_from; at < m_text.size();) {
        const std::size_t body = PieceEnd(at);
        const std::size_t end = FindHeader(body, in_rules);
        if (IsSameName(HeaderName(Piece(at)), in_section)) return Range{at, end};
        at = end;
    }
    return std::nullopt;
}

std::optional<OdbcIniText::Range> OdbcIniText::FindSection(std::string_view in_section,
                                                           Rules in_rules) const {
    if (!m_isReadable) return std::nullopt;
    if (in_rules == Rules::APPENDED_FILE) {
        return FindSectionFrom(m_firstSection, in_section, in_rules);
    }
    if (!m_isSought || !IsSameName(m_soughtName, in_section)) {
        m_found = FindSectionFrom(m_firstSection, in_section, in_rules);
        m_soughtName = in_section;
        m_isSought = true;
    }
    return m_found;
}

std::optional<OdbcIniText::Range> OdbcIniText::FindKey(Range in_section, std::string_view in_key,
                                                       Rules in_rules) const {
    std::size_t end = PieceEnd(in_section.m_begin);
    while (end < in_section.m_end) {
        const std::size_t begin = end;
        end = PieceEnd(begin);
        std::string_view piece = Piece(begin);
        if (in_rules == Rules::FIRST_FILE) piece = TrimLeft(piece);
        if (piece.empty() || IsComment(piece.front())) continue;
        if (in_rules == Rules::APPENDED_FILE && !IsLetterOrDigit(piece.front())) continue;
        if (in_rules == Rules::IODBC && !IsIodbcKeyLine(piece)) continue;
        const std::string_view key = KeyName(piece);
        if (IsSameName(in_rules == Rules::IODBC ? Unquote(key) : key, in_key)) {
            return Range{begin, end};
        }
    }
    return std::nullopt;
}

/// As FindKey, with all of the line even where the reader would cut it.
std::optional<OdbcIniText::Range> OdbcIniText::FindKeyLine(Range in_section,
                                                           std::string_view in_key) const {
    std::optional<Range> line = FindKey(in_section, in_key, m_rules);
    if (line && m_text[line->m_end - 1] != '\n')
        line->m_end = LineEnd(line->m_begin, in_section.m_end);
    return line;
}

bool OdbcIniText::HasSection(std::string_view in_section, Rules in_rules) const {
    return FindSection(in_section, in_rules).has_value();
}

std::optional<std::string> OdbcIniText::Get(std::string_view in_section, std::string_view in_key,
                                            Rules in_rules) const {
    const std::optional<Range> section = FindSection(in_section, in_rules);
    if (!section) return std::nullopt;
    const std::optional<Range> line = FindKey(*section, in_key, in_rules);
    if (!line) return std::nullopt;
    const std::string_view piece = Piece(line->m_begin);
    if (in_rules != Rules::IODBC) return KeyValueText(piece);
    std::string value(TrimIodbcValue(piece.substr(piece.find('=') + 1)));
    value.resize(IodbcValueSize(value));
    return value;
}

std::vector<std::string> OdbcIniText::GetSections() const {
    std::vector<std::string> names;
    if (!m_isReadable || m_firstSection == std::string::npos) return names;
    for (std::size_t at = m_firstSection; at < m_text.size();
         at = FindHeader(PieceEnd(at), m_rules)) {
        names.emplace_back(HeaderName(Piece(at)));
    }
    return names;
}

std::vector<OdbcIniText::KeyValue> OdbcIniText::GetKeyValues(std::string_view in_section) const {
    std::vector<KeyValue> lines;
    const std::optional<Range> section = FindSection(in_section, m_rules);
    if (!section) return lines;
    for (std::size_t at = PieceEnd(section->m_begin); at < section->m_end; at = PieceEnd(at)) {
        const std::string_view piece = TrimLeft(Piece(at));
        if (piece.empty() || IsComment(piece.front())) continue;
        lines.emplace_back(KeyName(piece), KeyValueText(piece));
    }
    return lines;
}

/// What stays of a section when its header and keys go. The tail of a long comment, which the
/// reader takes for a key, is made a comment of its own, or it would be a key of the section
/// before.
std::string OdbcIniText::KeepComments(Range in_section, Gap& out_gap) const {
    std::string kept;
    std::size_t end = LineEnd(in_section.m_begin, in_section.m_end);
    while (end < in_section.m_end) {
        const std::size_t begin = end;
        end = LineEnd(begin, in_section.m_end);
        const std::string_view content = TrimLeft(Piece(begin));
        if (content.empty() || IsComment(content.front())) {
            AppendComment(std::string_view(m_text).substr(begin, end - begin), kept);
        } else {
            out_gap.m_keys.push_back({std::string(KeyName(content)), kept.size()});
        }
    }
    return kept;
}

void OdbcIniText::AppendComment(std::string_view in_line, std::string& io_text) const {
    constexpr std::string_view MARK = "# ";
    while (in_line.size() - in_line.ends_with('\n') > m_maxPiece) {
        std::size_t size = m_maxPiece - MARK.size();
        while (size > 1 && IsContinuation(in_line[size])) --size;
        io_text.append(in_line.substr(0, size)).append(m_lineEnd).append(MARK);
        in_line.remove_prefix(size);
    }
    io_text.append(in_line);
}

void OdbcIniText::RemoveSection(std::string_view in_section) {
    std::optional<Range> section = FindSection(in_section, m_rules);
    while (section) {
        Gap gap{{std::string(in_section), 0}, {}};
        const std::string kept = KeepComments(*section, gap);
        const std::size_t position = Splice(*section, kept);
        gap.m_header.m_position = position;
        for (Place& key : gap.m_keys) key.m_position += position;
        m_gaps.push_back(std::move(gap));
        const std::size_t next = FindHeader(position, m_rules);
        section = FindSectionFrom(next, in_section, m_rules);
    }
    m_firstSection = FindHeader(0, m_rules);
    Remember(in_section, std::nullopt);
}

void OdbcIniText::Remember(std::string_view in_section, std::optional<Range> in_range) {
    m_soughtName = in_section;
    m_found = in_range;
    m_isSought = true;
}

void OdbcIniText::AddSection(std::string_view in_section) {
    if (HasSection(in_section)) return;
    std::string header("[");
    header.append(in_section).append("]").append(m_lineEnd);
    const auto gap = std::find_if(m_gaps.begin(), m_gaps.end(), [&](const Gap& in_gap) {
        return !in_gap.m_isBack && IsSameName(in_gap.m_header.m_name, in_section);
    });
    std::size_t position = 0;
    if (gap != m_gaps.end()) {
        gap->m_isBack = true;
        position = Splice({gap->m_header.m_position, gap->m_header.m_position}, header);
    } else if (const std::size_t end = m_text.size(); IsBlankLineBefore(end)) {
        position = Splice({end, end}, header + m_lineEnd);
    } else {
        position = Splice({end, end}, m_lineEnd + header) + m_lineEnd.size();
    }
    m_firstSection = FindHeader(0, m_rules);
    Remember(in_section, Range{position, FindHeader(PieceEnd(position), m_rules)});
}

/// Where a new key goes: to its old place, else behind the last key.
std::size_t OdbcIniText::InsertPosition(Range in_section, std::string_view in_section_name,
                                        std::string_view in_key) {
    for (Gap& gap : m_gaps) {
        if (!IsSameName(gap.m_header.m_name, in_section_name)) continue;
        const auto place = std::find_if(
            gap.m_keys.begin(), gap.m_keys.end(),
            [&](const Place& in_place) { return IsSameName(in_place.m_name, in_key); });
        if (place == gap.m_keys.end()) continue;
        const std::size_t position = place->m_position;
        gap.m_keys.erase(place);
        if (position > in_section.m_begin && position <= in_section.m_end) return position;
    }
    std::size_t position = LineEnd(in_section.m_begin, in_section.m_end);
    for (std::size_t at = position; at < in_section.m_end;) {
        const std::string_view content = TrimLeft(Piece(at));
        at = LineEnd(at, in_section.m_end);
        if (!content.empty() && !IsComment(content.front())) position = at;
    }
    return position;
}

void OdbcIniText::Set(std::string_view in_section, std::string_view in_key,
                      std::string_view in_value) {
    AddSection(in_section);
    const Range section = *FindSection(in_section, m_rules);
    WriteLine(in_section, in_key, in_value, FindKeyLine(section, in_key));
}

void OdbcIniText::Add(std::string_view in_section, std::string_view in_key,
                      std::string_view in_value) {
    AddSection(in_section);
    WriteLine(in_section, in_key, in_value, std::nullopt);
}

/// Writes a key of a section that is there, in place of a line or, without one, as a new line.
void OdbcIniText::WriteLine(std::string_view in_section, std::string_view in_key,
                            std::string_view in_value, std::optional<Range> in_old) {
    const Range section = *FindSection(in_section, m_rules);
    std::string line(in_key);
    line.append("=").append(in_value).append(m_lineEnd);
    if (!in_old) {
        const std::size_t position = InsertPosition(section, in_section, in_key);
        in_old = Range{position, position};
    }
    const std::size_t size = m_text.size();
    Splice(*in_old, line);
    Remember(in_section, Range{section.m_begin, section.m_end + m_text.size() - size});
}

void OdbcIniText::RemoveKey(std::string_view in_section, std::string_view in_key) {
    while (const std::optional<Range> section = FindSection(in_section, m_rules)) {
        const std::optional<Range> line = FindKeyLine(*section, in_key);
        if (!line) return;
        Splice(*line, "");
    }
}

void OdbcIniText::Finish() {
    for (std::size_t i = 0; i < m_gaps.size(); ++i) {
        if (!m_gaps[i].m_isBack) CloseGap(m_gaps[i].m_header.m_position);
    }
    m_gaps.clear();
    if (m_isChanged) MendFirstHeader();
    m_isSought = false;
    m_firstSection = FindHeader(0, m_rules);
}

/// True also at the beginning of the text.
bool OdbcIniText::IsBlankLineBefore(std::size_t in_position) const {
    if (in_position == 0) return true;
    if (m_text[in_position - 1] != '\n') return false;
    std::size_t begin = in_position - 1;
    while (begin > 0 && m_text[begin - 1] != '\n' && IsBlank(m_text[begin - 1])) --begin;
    return begin == 0 || m_text[begin - 1] == '\n';
}

void OdbcIniText::CloseGap(std::size_t in_position) {
    if (!IsBlankLineBefore(in_position)) return;
    std::size_t begin = in_position;
    if (in_position == m_text.size()) {
        if (in_position == 0) return;
        begin = in_position - 1;
        while (begin > 0 && m_text[begin - 1] != '\n') --begin;
    }
    const std::size_t end = LineEnd(begin, m_text.size());
    const std::string_view line(m_text.data() + begin, end - begin);
    if (Trim(line).empty()) Splice({begin, end}, "");
}

/// Replaces a range of whole lines, and puts line ends where the lines around it lack one.
/// @return where the new text begins
std::size_t OdbcIniText::Splice(Range in_old, std::string_view in_new) {
    const bool isAtLineBegin = in_old.m_begin == 0 || m_text[in_old.m_begin - 1] == '\n';
    const bool isAtEnd = in_old.m_end == m_text.size();
    std::string text;
    if (!isAtLineBegin && !(in_new.empty() && isAtEnd)) text += m_lineEnd;
    const std::size_t position = in_old.m_begin + text.size();
    text += in_new;
    if (!in_new.empty() && in_new.back() != '\n' && !isAtEnd) text += m_lineEnd;

    m_text.replace(in_old.m_begin, in_old.m_end - in_old.m_begin, text);
    m_isChanged = true;
    m_isSought = false;
    const auto shift = [&](std::size_t& io_position) {
        if (io_position >= in_old.m_end) {
            io_position += text.size() - (in_old.m_end - in_old.m_begin);
        } else {
            io_position = std::min(io_position, in_old.m_begin);
        }
    };
    for (Gap& gap : m_gaps) {
        shift(gap.m_header.m_position);
        for (Place& key : gap.m_keys) shift(key.m_position);
    }
    return position;
}

bool OdbcIniText::IsCarriableSection(std::string_view in_section) {
    return !in_section.empty() && in_section.size() + 2 <= MAX_LINE &&
           in_section.find(']') == std::string_view::npos && !HasOuterBlank(in_section) &&
           !HasControlCharacter(in_section);
}

bool OdbcIniText::IsCarriableLine(std::string_view in_key, std::string_view in_value,
                                  Rules in_rules) {
    return IsReadBack(in_key, in_value, in_rules) && !HasControlCharacter(in_key) &&
           !HasControlCharacter(in_value) && in_key.size() + 1 + in_value.size() <= MAX_LINE;
}

bool OdbcIniText::IsReadBack(std::string_view in_key, std::string_view in_value, Rules in_rules) {
    const bool isLine = !in_key.empty() && !IsComment(in_key.front()) && in_key.front() != '[' &&
                        in_key.find('=') == std::string_view::npos && !HasOuterBlank(in_key) &&
                        !HasLineEnd(in_key, in_rules) && !HasLineEnd(in_value, in_rules);
    if (in_rules != Rules::IODBC) {
        return isLine && !HasOuterBlank(in_value) &&
               in_key.size() + 1 + in_value.size() <= MAX_LINE;
    }
    return isLine && Unquote(in_key) == in_key && TrimIodbcValue(in_value) == in_value &&
           IodbcValueSize(in_value) == in_value.size();
}

}  // namespace Veltrane::ODBC
