#include "Setup/OdbcIniText.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "PlatformAbstraction/base/Ascii.h"

namespace Veltrane::ODBC {

namespace {

using OdbcIniLine::HeaderName;
using OdbcIniLine::IsComment;
using OdbcIniLine::KeyName;
using OdbcIniLine::KeyOf;
using OdbcIniLine::Seen;
using OdbcIniLine::TextAfterEquals;
using OdbcIniLine::ValueOf;
using Orska::Support::EqualsIgnoringCase;
using Orska::Support::IsAsciiBlank;
using Orska::Support::Trim;
using Orska::Support::TrimLeft;

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view BLANKS = " \t\n\v\f\r";

/// True for a byte of a UTF-8 character after its first.
bool IsContinuation(char in_char) { return (static_cast<unsigned char>(in_char) & 0xC0) == 0x80; }

/// Hashes eight bytes at a time. Bit 5 is set in all of them, so the case of letters does not
/// matter. That makes some other names equal too; the comparison tells them apart.
std::uint32_t HashName(std::string_view in_name) {
    constexpr std::uint64_t CASE_BITS = 0x2020202020202020;
    std::uint64_t hash = in_name.size();
    const auto add = [&hash](std::uint64_t in_word) {
        hash = (hash ^ (in_word | CASE_BITS)) * 0x9E3779B97F4A7C15;
        hash ^= hash >> 29;
    };
    std::uint64_t word = 0;
    for (; in_name.size() >= sizeof word; in_name.remove_prefix(sizeof word)) {
        std::memcpy(&word, in_name.data(), sizeof word);
        add(word);
    }
    word = 0;
    for (const char c : in_name) word = word << 8 | static_cast<unsigned char>(c);
    add(word);
    return static_cast<std::uint32_t>(hash >> 16);
}

/// Returns the beginning of the line that ends at in_end.
std::size_t LineBegin(std::string_view in_text, std::size_t in_end) {
    return in_text.substr(0, in_end - 1).rfind('\n') + 1;
}

/// Whether the line that ends at in_end is blank. True at the beginning of the text.
bool IsBlankLineAtEnd(std::string_view in_text, std::size_t in_end) {
    if (in_end == 0) return true;
    if (in_text[in_end - 1] != '\n') return false;
    std::size_t begin = in_end - 1;
    while (begin > 0 && in_text[begin - 1] != '\n' && IsAsciiBlank(in_text[begin - 1])) --begin;
    return begin == 0 || in_text[begin - 1] == '\n';
}

/// After searches for this many names, all sections are found and indexed.
constexpr std::size_t MAX_UNINDEXED_NAMES = 32;

/// Room for a section that is rewritten.
constexpr std::size_t USUAL_SECTION = 512;

}  // namespace

OdbcIniText::OdbcIniText(std::string in_bytes, Rules in_rules)
    : m_text(std::move(in_bytes)), m_rules(in_rules) {
    if (m_text.starts_with(BYTE_ORDER_MARK)) m_text.erase(0, BYTE_ORDER_MARK.size());
    const std::size_t lineEnd = m_text.find('\n');
    if (lineEnd != std::string::npos && lineEnd > 0 && m_text[lineEnd - 1] == '\r') {
        m_lineEnd = "\r\n";
    }
    m_isReadable = Pieces().FindRefused() == std::string::npos;
}

/// Only the first header has to begin in the first column. When the first section is removed, the
/// blanks before the next header go too.
void OdbcIniText::MendFirstHeader() {
    const std::size_t at = Pieces().FindRefused();
    if (at == std::string::npos) return;
    const std::size_t content = m_text.find_first_not_of(BLANKS, at);
    if (m_text[content] != '[') return;
    // A header that the reader splits must still be split at the same place.
    const std::size_t end = Pieces().EndOf(at);
    if (end < m_text.size() && m_text[end - 1] != '\n') m_text.insert(end, m_lineEnd);
    m_text.erase(at, content - at);
}

/// Finds all sections.
void OdbcIniText::MakeIndex() const {
    StartIndex();
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < m_blocks.size(); ++i) {
        if (!m_blocks[i].m_isRun) {
            blocks.push_back(m_blocks[i]);
            continue;
        }
        const std::size_t end = RangeOf(static_cast<std::uint32_t>(i)).m_end;
        for (std::size_t at = m_blocks[i].m_begin; at < end;) {
            const std::size_t body = Pieces().EndOf(at);
            blocks.push_back({at, HashName(HeaderName(Pieces().Get(at)))});
            at = Pieces().FindHeader(body, m_rules);
        }
    }
    m_blocks = std::move(blocks);
    m_isIndexed = true;
}

void OdbcIniText::StartIndex() const {
    if (!m_blocks.empty()) return;
    m_blocks.reserve(8);
    m_firstSection = Pieces().FindHeader(0, m_rules);
    if (m_firstSection < m_text.size()) m_blocks.push_back({m_firstSection, 0, NONE, true});
}

/// Splits a section off the run that it is in.
/// @param in_hash  of its name
std::uint32_t OdbcIniText::TakeFromRun(std::size_t in_begin, std::uint32_t in_hash) const {
    auto i = static_cast<std::uint32_t>(m_blocks.size()) - 1;
    while (m_blocks[i].m_begin > in_begin) --i;
    const std::size_t end = Pieces().FindHeader(Pieces().EndOf(in_begin), m_rules);
    if (end < RangeOf(i).m_end) m_blocks.insert(m_blocks.begin() + i + 1, {end, 0, NONE, true});
    if (m_blocks[i].m_begin < in_begin) m_blocks.insert(m_blocks.begin() + ++i, Block{});
    m_blocks[i] = {in_begin, in_hash};
    return i;
}

/// Backwards, so that the slot of each name ends up with its first section.
void OdbcIniText::FillSlots() const {
    if (!m_isIndexed) MakeIndex();
    m_slots.assign(std::bit_ceil(2 * m_blocks.size() + 16), NONE);
    m_nextOfName.assign(m_blocks.size(), NONE);
    for (auto i = static_cast<std::uint32_t>(m_blocks.size()); i-- > 0;) AddToSlots(i);
}

void OdbcIniText::AddToSlots(std::uint32_t in_block) const {
    const Block& block = m_blocks[in_block];
    std::uint32_t& slot = FindSlot(NameOf(block), block.m_hash);
    m_nextOfName[in_block] = slot;
    slot = in_block;
}

/// Returns the slot of the first section of that name, or the free slot for it.
std::uint32_t& OdbcIniText::FindSlot(std::string_view in_section, std::uint32_t in_hash) const {
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t at = in_hash & mask;; at = (at + 1) & mask) {
        std::uint32_t& slot = m_slots[at];
        if (slot == NONE || IsNamed(m_blocks[slot], in_section, in_hash)) return slot;
    }
}

bool OdbcIniText::IsNamed(const Block& in_block, std::string_view in_section,
                          std::uint32_t in_hash) const {
    return in_block.m_hash == in_hash && !in_block.m_isRun &&
           EqualsIgnoringCase(NameOf(in_block), in_section);
}

std::uint32_t OdbcIniText::FindFirst(std::string_view in_section) const {
    // A table of all names costs more than the few searches of a request that changes one section.
    if (m_slots.empty() && !m_isIndexed && SearchFor(in_section) != nullptr) {
        return FindNext(NONE, in_section);
    }
    if (m_slots.empty()) FillSlots();
    return FindSlot(in_section, HashName(in_section));
}

/// Returns the search for a name, null after too many of them.
OdbcIniText::Search* OdbcIniText::SearchFor(std::string_view in_section) const {
    const auto search = std::find_if(
        m_searches.begin(), m_searches.end(),
        [&](const Search& in_search) { return EqualsIgnoringCase(in_search.m_name, in_section); });
    if (search != m_searches.end()) return &*search;
    if (m_searches.size() == MAX_UNINDEXED_NAMES) return nullptr;
    StartIndex();
    m_searches.push_back({std::string(in_section), m_firstSection});
    return &m_searches.back();
}

/// Returns the next section of that name; for NONE the first one.
std::uint32_t OdbcIniText::FindNext(std::uint32_t in_block, std::string_view in_section) const {
    if (!m_slots.empty()) return m_nextOfName[in_block];
    const std::uint32_t hash = HashName(in_section);
    for (std::uint32_t i = in_block + 1; i < m_blocks.size(); ++i) {
        if (IsNamed(m_blocks[i], in_section, hash)) return i;
    }
    Search& search = *SearchFor(in_section);
    const std::size_t found = Pieces().FindHeader(search.m_end, m_rules, in_section);
    if (found == m_text.size()) {
        search.m_end = found;
        return NONE;
    }
    search.m_end = Pieces().EndOf(found);
    return TakeFromRun(found, hash);
}

/// Returns the first section of that name that was not removed; NONE when there is none.
std::uint32_t OdbcIniText::FindLive(std::string_view in_section) const {
    if (!m_isReadable) return NONE;
    // Most searches are for the same section as the last one. Inserting a block before it moves it
    // to a later index, so m_live never hits a later section of the same name.
    if (m_live < m_blocks.size() && !m_blocks[m_live].m_isRun && IsLive(m_live) &&
        EqualsIgnoringCase(NameOf(m_blocks[m_live]), in_section)) {
        return m_live;
    }
    std::uint32_t block = FindFirst(in_section);
    while (block != NONE && !IsLive(block)) block = FindNext(block, in_section);
    if (block != NONE) m_live = block;
    return block;
}

OdbcIniText::Range OdbcIniText::RangeOf(std::uint32_t in_block) const {
    const bool isLast = in_block + 1 == m_blocks.size();
    return {m_blocks[in_block].m_begin, isLast ? m_text.size() : m_blocks[in_block + 1].m_begin};
}

/// Returns null for a section that was not edited.
OdbcIniText::Body* OdbcIniText::BodyOf(std::uint32_t in_block) const {
    const std::uint32_t body = m_blocks[in_block].m_body;
    return body == NONE ? nullptr : m_bodies[body].get();
}

bool OdbcIniText::IsLive(std::uint32_t in_block) const {
    const Body* const body = BodyOf(in_block);
    return body == nullptr || body->IsLive();
}

std::string_view OdbcIniText::NameOf(const Block& in_block) const {
    return in_block.m_body == NONE ? HeaderName(Pieces().Get(in_block.m_begin))
                                   : m_bodies[in_block.m_body]->m_lines.front().m_key;
}

/// Calls in_visit with the visible part of each piece of a section, without its header, and whether
/// the piece begins a line.
template <typename Visit>
void OdbcIniText::VisitPieces(std::uint32_t in_block, const Visit& in_visit) const {
    if (const Body* const body = BodyOf(in_block)) {
        for (std::size_t i = 1; i < body->m_lines.size(); ++i) {
            const Line& line = body->m_lines[i];
            if (line.m_isLive) in_visit(Seen(line.m_text, m_rules), line.m_isOwn);
        }
        return;
    }
    const auto [begin, end] = RangeOf(in_block);
    const OdbcIniPieces pieces = Pieces();
    for (std::size_t at = pieces.EndOf(begin); at < end; at = pieces.EndOf(at)) {
        in_visit(pieces.Get(at), pieces.EndsLine(m_text[at - 1]));
    }
}

bool OdbcIniText::HasSection(std::string_view in_section, Rules in_rules) const {
    return in_rules == m_rules
               ? FindLive(in_section) != NONE
               : m_isReadable && Pieces().FindSection(in_section, in_rules).has_value();
}

std::optional<std::string> OdbcIniText::Get(std::string_view in_section, std::string_view in_key,
                                            Rules in_rules) const {
    if (in_rules != m_rules) {
        if (!m_isReadable) return std::nullopt;
        const std::optional<Range> section = Pieces().FindSection(in_section, in_rules);
        return section ? Pieces().FindValue(*section, in_key, in_rules) : std::nullopt;
    }
    const std::uint32_t block = FindLive(in_section);
    if (block == NONE) return std::nullopt;
    Body* const body = BodyOf(block);
    if (body == nullptr) return Pieces().FindValue(RangeOf(block), in_key, in_rules);
    const Line* const line = body->Find(in_key);
    if (line == nullptr || !line->m_isLive) return std::nullopt;
    return ValueIn(*line);
}

std::string OdbcIniText::ValueIn(const Line& in_line) const {
    return ValueOf(Seen(in_line.m_text, m_rules), m_rules, !EndsFile(in_line));
}

/// True for the last line of a file of iODBC when it ends with a blank. The blank belongs to the
/// value as long as no line end follows.
bool OdbcIniText::EndsFile(const Line& in_line) const {
    const char last = in_line.m_text.back();
    return m_rules == Rules::IODBC && in_line.m_isKey && IsAsciiBlank(last) &&
           !Pieces().EndsLine(last);
}

bool OdbcIniText::IsAtEnd(std::string_view in_section, std::string_view in_key,
                          std::string_view in_value) const {
    const std::uint32_t block = FindLive(in_section);
    if (block == NONE || BodyOf(block) == nullptr) return false;
    const Line& last = BodyOf(block)->m_lines.back();
    return EndsFile(last) && EqualsIgnoringCase(last.m_key, in_key) && ValueIn(last) == in_value;
}

std::vector<std::string> OdbcIniText::GetSections() const {
    std::vector<std::string> names;
    if (!m_isReadable) return names;
    if (!m_isIndexed) MakeIndex();
    for (std::uint32_t i = 0; i < m_blocks.size(); ++i) {
        if (IsLive(i)) names.emplace_back(NameOf(m_blocks[i]));
    }
    return names;
}

std::vector<OdbcIniText::KeyValue> OdbcIniText::GetKeyValues(std::string_view in_section) const {
    std::vector<KeyValue> lines;
    const std::uint32_t block = FindLive(in_section);
    if (block == NONE) return lines;
    VisitPieces(block, [&lines](std::string_view in_piece, bool) {
        const std::string_view piece = TrimLeft(in_piece);
        if (piece.empty() || IsComment(piece.front())) return;
        lines.emplace_back(KeyName(piece), TextAfterEquals(piece));
    });
    return lines;
}

bool OdbcIniText::HasLongLine(std::string_view in_section) const {
    bool hasLongLine = false;
    const std::uint32_t block = FindLive(in_section);
    if (block == NONE) return false;
    VisitPieces(block, [&hasLongLine](std::string_view in_piece, bool in_isOwn) {
        hasLongLine = hasLongLine || (!in_isOwn && !Trim(in_piece).empty());
    });
    return hasLongLine;
}

OdbcIniText::Line OdbcIniText::MakeLine(std::string_view in_piece, bool in_isOwn) const {
    const std::string_view seen = Seen(in_piece, m_rules);
    const std::string_view content = TrimLeft(seen);
    const std::optional<std::string_view> key = KeyOf(seen, m_rules);
    return {in_piece, key.value_or(std::string_view()), key.has_value(),
            !content.empty() && !IsComment(content.front()), in_isOwn};
}

OdbcIniText::Body& OdbcIniText::Edit(std::uint32_t in_block) {
    m_isChanged = true;
    if (Body* const body = BodyOf(in_block)) return *body;
    auto body = std::make_unique<Body>();
    const auto [begin, end] = RangeOf(in_block);
    body->m_lines.reserve(16);
    for (std::size_t at = begin; at < end;) {
        const std::size_t next = Pieces().EndOf(at);
        const bool isOwn = at == 0 || Pieces().EndsLine(m_text[at - 1]);
        body->m_lines.push_back(MakeLine({m_text.data() + at, next - at}, isOwn));
        at = next;
    }
    Line& header = body->m_lines.front();
    header.m_key = HeaderName(Seen(header.m_text, m_rules));
    header.m_isKey = false;
    m_blocks[in_block].m_body = static_cast<std::uint32_t>(m_bodies.size());
    return *m_bodies.emplace_back(std::move(body));
}

/// Removes header and keys. The tail of a long comment, which the reader takes for a key, becomes a
/// comment: otherwise it would be a key of the section before.
void OdbcIniText::RemoveBlock(Body& io_body) {
    std::vector<Line>& lines = io_body.m_lines;
    for (std::size_t i = 0; i < lines.size();) {
        Line& line = lines[i];
        const std::size_t end = io_body.EndOfLine(i);
        if (i == 0 || line.m_isContent) {
            io_body.Remove(i);
        } else if (end > i + 1) {
            std::string whole;
            for (std::size_t part = i; part < end; ++part) {
                if (lines[part].m_isLive) whole += lines[part].m_text;
            }
            io_body.Remove(i);
            line.m_isLive = true;
            line.m_text = m_written.Keep({MakeComment(whole)});
        }
        i = end;
    }
}

/// Splits a comment into lines that the reader does not split.
std::string OdbcIniText::MakeComment(std::string_view in_line) const {
    constexpr std::string_view MARK = "# ";
    const std::size_t most = OdbcIniPieces::GetMost(m_rules);
    std::string comment;
    while (in_line.size() - in_line.ends_with('\n') > most) {
        std::size_t size = most - MARK.size();
        while (size > 1 && IsContinuation(in_line[size])) --size;
        comment.append(in_line.substr(0, size)).append(m_lineEnd).append(MARK);
        in_line.remove_prefix(size);
    }
    return comment.append(in_line);
}

void OdbcIniText::RemoveSection(std::string_view in_section) {
    if (!m_isReadable) return;
    for (std::uint32_t i = FindFirst(in_section); i != NONE; i = FindNext(i, in_section)) {
        if (IsLive(i)) RemoveBlock(Edit(i));
    }
}

void OdbcIniText::AddSection(std::string_view in_section) {
    if (m_isReadable) AddLive(in_section);
}

/// Returns the first live section of that name, and adds it if there is none.
std::uint32_t OdbcIniText::AddLive(std::string_view in_section) {
    std::uint32_t block = FindLive(in_section);
    if (block != NONE) return block;
    m_isChanged = true;
    block = FindFirst(in_section);
    if (block == NONE) block = AddBlock(in_section);
    const std::string_view header = m_written.Keep({"[", in_section, "]", m_lineEnd});
    BodyOf(block)->m_lines.front() = {header, header.substr(1, in_section.size())};
    return block;
}

/// Adds a section at the end, with a blank line after it if the text ends with one, else before.
std::uint32_t OdbcIniText::AddBlock(std::string_view in_section) {
    auto body = std::make_unique<Body>();
    body->m_isNew = true;
    body->m_isSpaced = !EndsWithBlankLine();
    body->m_lines.push_back({{}, m_written.Keep({in_section})});
    if (!body->m_isSpaced) body->m_lines.push_back({m_lineEnd, {}});
    m_blocks.push_back(
        {m_text.size(), HashName(in_section), static_cast<std::uint32_t>(m_bodies.size())});
    m_bodies.push_back(std::move(body));
    if (2 * m_blocks.size() <= m_slots.size()) {
        m_nextOfName.push_back(NONE);
        AddToSlots(static_cast<std::uint32_t>(m_blocks.size() - 1));
    } else if (!m_slots.empty()) {
        FillSlots();
    }
    return static_cast<std::uint32_t>(m_blocks.size() - 1);
}

bool OdbcIniText::EndsWithBlankLine() const {
    for (auto i = static_cast<std::uint32_t>(m_blocks.size()); i-- > 0;) {
        const Body* const body = BodyOf(i);
        if (body == nullptr) return IsBlankLineAtEnd(m_text, RangeOf(i).m_end);
        const auto last = std::find_if(body->m_lines.rbegin(), body->m_lines.rend(),
                                       [](const Line& in_line) { return in_line.m_isLive; });
        if (last == body->m_lines.rend() || (body->m_isNew && !body->IsLive())) continue;
        return last->m_isOwn && last->m_text.ends_with('\n') && Trim(last->m_text).empty();
    }
    return IsBlankLineAtEnd(m_text, m_firstSection);
}

void OdbcIniText::Set(std::string_view in_section, std::string_view in_key,
                      std::string_view in_value) {
    if (!m_isReadable) return;
    Body& body = Edit(AddLive(in_section));
    const std::string_view text = m_written.Keep({in_key, "=", in_value, m_lineEnd});
    const Line line{text, text.substr(0, in_key.size()), true, true};
    Line* const old = body.Find(in_key);
    if (old == nullptr) {
        const bool isBeforeLast = EndsFile(body.m_lines.back()) && body.m_lines.back().m_isLive;
        body.Insert(line);
        if (isBeforeLast) std::swap(body.m_lines.back(), *(body.m_lines.end() - 2));
        if (isBeforeLast) body.m_index.clear();
    } else if (EndsFile(*old) && ValueIn(*old) == in_value) {
        old->m_isLive = true;
    } else {
        body.Remove(static_cast<std::size_t>(old - body.m_lines.data()));
        *old = line;
    }
}

void OdbcIniText::RemoveKey(std::string_view in_section, std::string_view in_key) {
    if (!Get(in_section, in_key)) return;
    Body& body = Edit(FindLive(in_section));
    for (Line* line = body.Find(in_key); line->m_isLive; line = body.Find(in_key)) {
        body.Remove(static_cast<std::size_t>(line - body.m_lines.data()));
    }
}

void OdbcIniText::Finish() {
    if (!m_bodies.empty()) {
        Render();
        MendFirstHeader();
    }
    m_blocks.clear();
    m_bodies.clear();
    m_written.Clear();
    m_slots.clear();
    m_searches.clear();
    m_isIndexed = false;
    m_live = 0;
}

void OdbcIniText::EndLine(std::string& io_text) const {
    if (!io_text.empty() && !Pieces().EndsLine(io_text.back())) io_text += m_lineEnd;
}

/// Puts new sections before the last one if the line at the end of the file has to stay there.
void OdbcIniText::KeepEndLast() {
    if (m_rules != Rules::IODBC || m_text.empty() || !IsAsciiBlank(m_text.back()) ||
        Pieces().EndsLine(m_text.back())) {
        return;
    }
    const auto isNew = [this](const Block& in_block) { return in_block.m_begin == m_text.size(); };
    const auto added = std::find_if(m_blocks.begin(), m_blocks.end(), isNew);
    if (added == m_blocks.begin()) return;
    for (auto i = added; i != m_blocks.end(); ++i) i->m_begin = (added - 1)->m_begin;
    std::rotate(added - 1, added, m_blocks.end());
}

/// Rewrites the text from the line before the first edited section to the end of the last one.
void OdbcIniText::Render() {
    KeepEndLast();
    std::uint32_t first = 0;
    while (BodyOf(first) == nullptr) ++first;
    std::size_t begin = m_blocks[first].m_begin;
    while (begin > 0 && IsBlankLineAtEnd(m_text, begin)) begin = LineBegin(m_text, begin);
    if (begin > 0) begin = LineBegin(m_text, begin);
    std::size_t copied = begin;
    std::size_t gaps = 0;
    std::string text;
    text.reserve(USUAL_SECTION);
    const auto copyUntil = [&](std::size_t in_end) {
        if (in_end <= copied) return;
        if (copied > begin) EndLine(text);
        text.append(m_text, copied, in_end - copied);
        gaps = 0;
    };
    for (std::uint32_t i = first; i < m_blocks.size(); ++i) {
        const Body* const body = BodyOf(i);
        if (body == nullptr) continue;
        copyUntil(m_blocks[i].m_begin);
        Render(*body, gaps, text);
        copied = RangeOf(i).m_end;
    }
    if (copied < m_text.size()) EndLine(text);
    while (copied == m_text.size() && gaps-- > 0 && !text.empty() &&
           IsBlankLineAtEnd(text, text.size())) {
        text.resize(LineBegin(text, text.size()));
    }
    m_text.replace(begin, copied - begin, text);
}

/// @param io_gaps  the number of blank lines that go with removed sections
void OdbcIniText::Render(const Body& in_body, std::size_t& io_gaps, std::string& io_text) const {
    const bool isLive = in_body.IsLive();
    if (!isLive && in_body.m_isNew) return;
    if (!isLive && IsBlankLineAtEnd(io_text, io_text.size())) ++io_gaps;
    if (isLive && in_body.m_isSpaced && !io_text.empty()) {
        EndLine(io_text);
        io_text += m_lineEnd;
    }
    for (const Line& line : in_body.m_lines) {
        if (!line.m_isLive) continue;
        if (io_gaps > 0 && Trim(line.m_text).empty()) {
            --io_gaps;
            continue;
        }
        io_gaps = 0;
        if (line.m_isOwn || &line == in_body.m_lines.data()) EndLine(io_text);
        io_text += line.m_text;
    }
}

}  // namespace Veltrane::ODBC
