/// The text of one odbc.ini in memory: read as the driver manager's installer library reads the
/// file, edited without touching a byte that does not belong to the section in question.
///
/// The reader's rules, which decide what a file means. unixODBC's: lines are cut to pieces of 999
/// bytes, and each piece counts as a line; a line ends for the reader at a NUL; blanks around
/// lines, names, keys and values do not count; lines that begin with # or ; are comments;
/// everything from "[" to
/// "]" is a section name; names compare without regard to ASCII case; of sections or keys that
/// occurs twice the first one counts; anything but comments and blank lines before the first
/// section makes the whole file unreadable. A byte order mark is no part of the text here: it would
/// make the file unreadable to the driver manager, so it is dropped when the file is written.
///
/// iODBC's: lines may have any length and end at a carriage return too; a key begins in the first
/// column, is followed by "=" and may be in quotes; a section name is not empty and ends with
/// "]"; a # or ; at the beginning of a value, or after a blank in it and outside of quotes, begins
/// a comment; what is before the first section does not matter. The rest is as above.
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

namespace Veltrane::ODBC {

class OdbcIniText {
public:
    using Rules = OdbcIniLine::Rules;

    OdbcIniText() = default;
    /// @param in_rules  how the file is read where nothing else is said, and therefore edited
    explicit OdbcIniText(std::string in_bytes, Rules in_rules = Rules::FIRST_FILE);

    /// False when the reader refuses the file as a whole.
    bool IsReadable() const noexcept { return m_isReadable; }
    /// The text as it was given, or as the last Finish has made it.
    const std::string& GetBytes() const noexcept { return m_text; }
    bool IsChanged() const noexcept { return m_isChanged; }
    Rules GetRules() const noexcept { return m_rules; }

    /// A line of a section: its key, and its value without outer blanks.
    using KeyValue = std::pair<std::string, std::string>;

    /// The names of all sections in the order of the file; one that occurs twice is named twice.
    std::vector<std::string> GetSections() const;
    /// The lines of the section that counts, keys that occur twice included; empty without one.
    std::vector<KeyValue> GetKeyValues(std::string_view in_section) const;
    /// Whether a line of the section that counts is longer than what the reader takes as one.
    bool HasLongLine(std::string_view in_section) const;
    bool HasSection(std::string_view in_section) const { return HasSection(in_section, m_rules); }
    /// Other rules than the text's own see it as it was before the edits.
    bool HasSection(std::string_view in_section, Rules in_rules) const;
    /// The value, without outer blanks; nothing when the reader finds none.
    std::optional<std::string> Get(std::string_view in_section, std::string_view in_key) const {
        return Get(in_section, in_key, m_rules);
    }
    std::optional<std::string> Get(std::string_view in_section, std::string_view in_key,
                                   Rules in_rules) const;

    /// Removes the header and the keys of every section of that name. Comments and blank lines
    /// stay, and the places are remembered: a section and keys of the same names that are added
    /// before Finish return to them.
    void RemoveSection(std::string_view in_section);
    /// Adds a section without keys, at its old place or at the end.
    void AddSection(std::string_view in_section);
    /// Writes a key in the first section of that name, which is added when there is none.
    void Set(std::string_view in_section, std::string_view in_key, std::string_view in_value);
    void RemoveKey(std::string_view in_section, std::string_view in_key);
    /// Ends the edits and makes the text anew, in one pass. Closes the gaps of sections that were
    /// removed and have not come back: of the blank lines before and after such a section one goes
    /// with it. Adding and removing a section thus leaves the text as it was.
    void Finish();

private:
    static constexpr std::uint32_t NONE = UINT32_MAX;

    using Range = OdbcIniPieces::Range;
    using Body = OdbcIniSection;
    using Line = OdbcIniSection::Line;

    /// A section, or a run of sections that nobody has asked for. It ends where the next one
    /// begins.
    struct Block {
        std::size_t m_begin;
        std::uint32_t m_hash;         ///< of the name
        std::uint32_t m_body = NONE;  ///< NONE while it is as in the text
        bool m_isRun = false;
    };
    /// Before its end all sections of that name are known.
    struct Search {
        std::string m_name;
        std::size_t m_end;
    };

    OdbcIniPieces Pieces() const noexcept { return {m_text, m_rules}; }
    void MendFirstHeader();

    void StartIndex() const;
    void MakeIndex() const;
    std::uint32_t TakeFromRun(std::size_t in_begin) const;
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
    std::string_view NameOf(const Block& in_block) const;
    template <typename Visit>
    void VisitPieces(std::uint32_t in_block, const Visit& in_visit) const;

    Body& Edit(std::uint32_t in_block);
    Line MakeLine(std::string_view in_piece, bool in_isOwn) const;
    void RemoveBlock(Body& io_body) const;
    void AppendComment(std::string_view in_line, std::string& io_text) const;
    std::uint32_t AddLive(std::string_view in_section);
    std::uint32_t AddBlock(std::string_view in_section);
    bool EndsWithBlankLine() const;
    void Render();
    void Render(const Body& in_body, std::size_t& io_gaps, std::string& io_text) const;

    std::string m_text;
    Rules m_rules = Rules::FIRST_FILE;
    std::string m_lineEnd = "\n";
    bool m_isReadable = true;
    bool m_isChanged = false;
    /// The sections in their order, found by the searches.
    mutable std::size_t m_firstSection = 0;  ///< the end of the text when there is none
    mutable std::vector<Block> m_blocks;
    mutable std::vector<Search> m_searches;
    mutable bool m_isIndexed = false;  ///< there are no runs
    mutable std::uint32_t m_live = 0;  ///< what the last search has found, or the first
    /// After some searches: a hash table of the first sections of each name, and the next ones.
    mutable std::vector<std::uint32_t> m_slots;
    mutable std::vector<std::uint32_t> m_nextOfName;
    std::vector<std::unique_ptr<Body>> m_bodies;
};

}  // namespace Veltrane::ODBC

#endif
