/// The text of one odbc.ini in memory: read as the driver manager's installer library reads the
/// file, edited without touching a byte that does not belong to the section in question.
///
/// The reader's rules, which decide what a file means. unixODBC's: lines are cut to pieces of 999
/// bytes, and each piece counts as a line; a line ends for the reader at a NUL; blanks around
/// lines, names, keys and values do not count; lines that begin with # or ; are comments;
/// everything from "[" to
/// "]" is a section name; names compare without regard to ASCII case; of sections or keys that
/// stand twice the first one counts; anything but comments and blank lines before the first section
/// makes the whole file unreadable. A byte order mark is no part of the text here: it would make
/// the file unreadable to the driver manager, so it is dropped when the file is written.
///
/// iODBC's: lines may have any length and end at a carriage return too; a key begins in the first
/// column, is followed by "=" and may stand in quotes; a section name is not empty and ends with
/// "]"; a # or ; at the beginning of a value, or behind a blank in it and outside of quotes, begins
/// a comment; what stands before the first section does not matter. The rest is as above.
#ifndef SETUP_ODBCINITEXT_H
#define SETUP_ODBCINITEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Veltrane::ODBC {

class OdbcIniText {
public:
    /// Most bytes of a line, without its end, that the reader takes as one.
    static constexpr std::size_t MAX_LINE = 999;

    /// How the reader treats the file: as the only or first one, or as the system file whose
    /// sections it appends to those of the user file. The latter counts a section or a key only
    /// when it begins in the first column, and a key only when it begins with a letter or digit.
    /// IODBC: as iODBC treats any file.
    enum class Rules { FIRST_FILE, APPENDED_FILE, IODBC };

    OdbcIniText() = default;
    /// @param in_rules  how the file is read where nothing else is said, and therefore edited
    explicit OdbcIniText(std::string in_bytes, Rules in_rules = Rules::FIRST_FILE);

    /// False when the reader refuses the file as a whole.
    bool IsReadable() const noexcept { return m_isReadable; }
    /// The text as it is to be written.
    const std::string& GetBytes() const noexcept { return m_text; }
    bool IsChanged() const noexcept { return m_isChanged; }

    /// A line of a section: its key, and its value without outer blanks.
    using KeyValue = std::pair<std::string, std::string>;

    /// The names of all sections in the order of the file; one that stands twice is named twice.
    std::vector<std::string> GetSections() const;
    /// The lines of the section that counts, keys that stand twice included; empty without one.
    std::vector<KeyValue> GetKeyValues(std::string_view in_section) const;
    bool HasSection(std::string_view in_section) const { return HasSection(in_section, m_rules); }
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
    /// Writes a further line for a key, behind those that it has. Only the first one counts.
    void Add(std::string_view in_section, std::string_view in_key, std::string_view in_value);
    void RemoveKey(std::string_view in_section, std::string_view in_key);
    /// Ends the edits. Closes the gaps of sections that were removed and have not come back: of the
    /// blank lines before and after such a section one goes with it. Adding and removing a section
    /// thus leaves the text as it was.
    void Finish();

    /// Whether a section of this name can be written and found again.
    static bool IsCarriableSection(std::string_view in_section);
    /// Whether a line with this key and value is read back unchanged. Values that were read from
    /// the file are.
    static bool IsReadBack(std::string_view in_key, std::string_view in_value, Rules in_rules);
    /// Whether a line with this key and new value may be written: one that is read back unchanged
    /// and has no control characters.
    static bool IsCarriableLine(std::string_view in_key, std::string_view in_value,
                                Rules in_rules = Rules::FIRST_FILE);

private:
    struct Range {
        std::size_t m_begin;
        std::size_t m_end;
    };
    struct Place {
        std::string m_name;
        std::size_t m_position;
    };
    /// Where a removed section and its keys stood.
    struct Gap {
        Place m_header;
        std::vector<Place> m_keys;
        bool m_isBack = false;  ///< the section has been added again
    };

    std::size_t FindRefused() const;
    void MendFirstHeader();
    std::size_t PieceEnd(std::size_t in_begin) const;
    std::string_view Piece(std::size_t in_begin) const;
    std::size_t FindHeader(std::size_t in_from, Rules in_rules) const;
    std::optional<Range> FindSectionFrom(std::size_t in_from, std::string_view in_section,
                                         Rules in_rules) const;
    std::optional<Range> FindSection(std::string_view in_section, Rules in_rules) const;
    std::optional<Range> FindKey(Range in_section, std::string_view in_key, Rules in_rules) const;
    std::optional<Range> FindKeyLine(Range in_section, std::string_view in_key) const;
    std::size_t LineEnd(std::size_t in_begin, std::size_t in_limit) const;
    bool IsBlankLineBefore(std::size_t in_position) const;
    std::string KeepComments(Range in_section, Gap& out_gap) const;
    void AppendComment(std::string_view in_line, std::string& io_text) const;
    std::size_t InsertPosition(Range in_section, std::string_view in_section_name,
                               std::string_view in_key);
    void WriteLine(std::string_view in_section, std::string_view in_key, std::string_view in_value,
                   std::optional<Range> in_old);
    void Remember(std::string_view in_section, std::optional<Range> in_range);
    void CloseGap(std::size_t in_position);
    std::size_t Splice(Range in_old, std::string_view in_new);

    std::string m_text;
    Rules m_rules = Rules::FIRST_FILE;
    std::size_t m_maxPiece = MAX_LINE;  ///< where the reader cuts a line
    std::string m_lineEnd = "\n";
    std::size_t m_firstSection = 0;  ///< the end of the text when there is none
    bool m_isReadable = true;
    bool m_isChanged = false;
    std::vector<Gap> m_gaps;
    /// The section sought last and where it is, so that a request searches the text once.
    mutable bool m_isSought = false;
    mutable std::string m_soughtName;
    mutable std::optional<Range> m_found;
};

}  // namespace Veltrane::ODBC

#endif
