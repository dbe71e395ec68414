/// The text of one odbc.ini in memory. Reads it as the driver manager's installer library does.
/// Edits touch no byte outside the section in question.
///
/// The rules of unixODBC: a line is split into pieces of 999 bytes, and each piece counts as a
/// line; a NUL ends a line; blanks around lines, names, keys and values do not count; lines that
/// begin with # or ; are comments; everything from "[" to "]" is a section name; names ignore ASCII
/// case; the first of several sections or keys of one name counts; anything except comments and
/// blank lines before the first section makes the whole file unreadable. So does a byte order mark:
/// it is not part of the text here and is dropped when the file is written.
///
/// The rules of iODBC: lines have any length and also end at a carriage return; a key begins in the
/// first column, is followed by "=" and can be in quotes; a section name is not empty and ends with
/// "]"; a # or ; begins a comment at the beginning of a value, or after a blank in it outside of
/// quotes; blanks at the end of the file belong to the last value; text before the first section
/// does not matter. The rest is as above.
#ifndef SETUP_ODBCINITEXT_H
#define SETUP_ODBCINITEXT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Setup/OdbcIniLine.h"
#include "Setup/OdbcIniPieces.h"
#include "Setup/OdbcIniSection.h"
#include "Setup/TextStore.h"

namespace Veltrane::ODBC {

class OdbcIniText {
public:
    using Rules = OdbcIniLine::Rules;

    OdbcIniText() = default;
    /// @param in_rules  for edits, and for functions that are called without rules
    explicit OdbcIniText(std::string in_bytes, Rules in_rules = Rules::FIRST_FILE);

    /// False when the reader refuses the file as a whole.
    bool IsReadable() const noexcept { return m_isReadable; }
    /// Returns the text as it was passed in, or as the last Finish left it.
    const std::string& GetBytes() const noexcept { return m_text; }
    bool IsChanged() const noexcept { return m_isChanged; }
    Rules GetRules() const noexcept { return m_rules; }

    /// A line of a section: its key, and its value without outer blanks.
    using KeyValue = std::pair<std::string, std::string>;

    /// Returns the names of all sections in file order; repeated names are listed again.
    std::vector<std::string> GetSections() const;
    /// Returns the lines of the first section of that name, repeated keys included; empty when
    /// there is none.
    std::vector<KeyValue> GetKeyValues(std::string_view in_section) const;
    /// Whether the first section of that name has a line that the reader splits.
    bool HasLongLine(std::string_view in_section) const;
    bool HasSection(std::string_view in_section) const { return HasSection(in_section, m_rules); }
    /// With other rules than the text's, it ignores the edits.
    bool HasSection(std::string_view in_section, Rules in_rules) const;
    /// Returns the value without outer blanks; nothing when the reader finds none.
    std::optional<std::string> Get(std::string_view in_section, std::string_view in_key) const {
        return Get(in_section, in_key, m_rules);
    }
    std::optional<std::string> Get(std::string_view in_section, std::string_view in_key,
                                   Rules in_rules) const;

    /// Whether the value is the last one of a file of iODBC and ends with blanks. Set keeps such a
    /// line.
    bool IsAtEnd(std::string_view in_section, std::string_view in_key,
                 std::string_view in_value) const;

    /// Removes the header and the keys of every section of that name. Comments and blank lines
    /// stay. A section or key of the same name returns to its old place when added before Finish.
    void RemoveSection(std::string_view in_section);
    /// Adds a section without keys, at its old place or at the end.
    void AddSection(std::string_view in_section);
    /// Writes a key in the first section of that name; adds the section if there is none.
    void Set(std::string_view in_section, std::string_view in_key, std::string_view in_value);
    void RemoveKey(std::string_view in_section, std::string_view in_key);
    /// Ends the edits and rewrites the text in one pass. One of the blank lines around a removed
    /// section goes with it, so adding and removing a section restores the text.
    void Finish();

private:
    static constexpr std::uint32_t NONE = UINT32_MAX;

    using Range = OdbcIniPieces::Range;
    using Body = OdbcIniSection;
    using Line = OdbcIniSection::Line;

    /// A section, or a run of sections not searched for yet. It ends where the next block begins.
    struct Block {
        std::size_t m_begin;
        std::uint32_t m_hash;         ///< of the name
        std::uint32_t m_body = NONE;  ///< NONE if not edited
        bool m_isRun = false;
    };
    /// All sections of that name before m_end are known.
    struct Search {
        std::string m_name;
        std::size_t m_end;
    };

    OdbcIniPieces Pieces() const noexcept { return {m_text, m_rules}; }
    void MendFirstHeader();

    void StartIndex() const;
    void MakeIndex() const;
    std::uint32_t TakeFromRun(std::size_t in_begin, std::uint32_t in_hash) const;
    Search* SearchFor(std::string_view in_section) const;
    void FillSlots() const;
    void AddToSlots(std::uint32_t in_block) const;
    std::uint32_t& FindSlot(std::string_view in_section, std::uint32_t in_hash) const;
    bool IsNamed(const Block& in_block, std::string_view in_section, std::uint32_t in_hash) const;
    std::uint32_t FindFirst(std::string_view in_section) const;
    std::uint32_t FindNext(std::uint32_t in_block, std::string_view in_section) const;
    std::uint32_t FindLive(std::string_view in_section) const;
    Range RangeOf(std::uint32_t in_block) const;
    Body* BodyOf(std::uint32_t in_block) const;
    bool IsLive(std::uint32_t in_block) const;
    std::string ValueIn(const Line& in_line) const;
    bool EndsFile(const Line& in_line) const;
    std::string_view NameOf(const Block& in_block) const;
    template <typename Visit>
    void VisitPieces(std::uint32_t in_block, const Visit& in_visit) const;

    Body& Edit(std::uint32_t in_block);
    Line MakeLine(std::string_view in_piece, bool in_isOwn) const;
    void RemoveBlock(Body& io_body);
    std::string MakeComment(std::string_view in_line) const;
    std::uint32_t AddLive(std::string_view in_section);
    std::uint32_t AddBlock(std::string_view in_section);
    bool EndsWithBlankLine() const;
    void EndLine(std::string& io_text) const;
    void KeepEndLast();
    void Render();
    void Render(const Body& in_body, std::size_t& io_gaps, std::string& io_text) const;

    std::string m_text;
    Rules m_rules = Rules::FIRST_FILE;
    std::string m_lineEnd = "\n";
    bool m_isReadable = true;
    bool m_isChanged = false;
    /// The blocks in file order, filled by searches.
    mutable std::size_t m_firstSection = 0;  ///< the end of the text when there is none
    mutable std::vector<Block> m_blocks;
    mutable std::vector<Search> m_searches;
    mutable bool m_isIndexed = false;  ///< there are no runs
    mutable std::uint32_t m_live = 0;  ///< the section found last; 0 before
    /// After many searches: a hash table of the first section of each name, and links to the next.
    mutable std::vector<std::uint32_t> m_slots;
    mutable std::vector<std::uint32_t> m_nextOfName;
    std::vector<std::unique_ptr<Body>> m_bodies;
    TextStore m_written;  ///< new lines
};

}  // namespace Veltrane::ODBC

#endif
