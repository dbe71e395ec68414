/// One line of an odbc.ini: what the driver managers read from it, and what it can hold. Their
/// rules are in OdbcIniText.h.
#ifndef SETUP_ODBCINILINE_H
#define SETUP_ODBCINILINE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrane::ODBC::OdbcIniLine {

/// The longest line, in bytes without its end, that the reader does not split.
inline constexpr std::size_t MAX_LINE = 999;

/// How the reader treats the file. FIRST_FILE: the only file or the first. APPENDED_FILE: the
/// system's file, whose sections follow those of the user's file; a section or a key counts only if
/// it begins in the first column, a key only if it begins with a letter or digit. IODBC: any file
/// of iODBC.
enum class Rules { FIRST_FILE, APPENDED_FILE, IODBC };

/// Returns the characters at which the reader ends a line.
constexpr std::string_view LineEnds(Rules in_rules) {
    return in_rules == Rules::IODBC ? "\n\r\x1A" : "\n";
}
constexpr bool IsComment(char in_char) { return in_char == '#' || in_char == ';'; }
/// Returns the part of a piece that the reader sees.
std::string_view Seen(std::string_view in_piece, Rules in_rules);
std::string_view HeaderName(std::string_view in_piece);
/// Whether iODBC accepts a line that looks like a section header.
bool HasIodbcName(std::string_view in_piece);
std::string_view KeyName(std::string_view in_piece);
/// Returns the key in a piece as Seen returns it; nothing when the reader finds none.
std::optional<std::string_view> KeyOf(std::string_view in_piece, Rules in_rules);
std::string TextAfterEquals(std::string_view in_piece);
/// @param in_isEnded  false for a line at the end of the file without a line end
std::string ValueOf(std::string_view in_piece, Rules in_rules, bool in_isEnded);

/// Whether a section of this name can be written and found again.
bool IsCarriableSection(std::string_view in_section);
/// Whether a line with this key and value is read back unchanged. True for values that were read
/// from the file.
bool IsReadBack(std::string_view in_key, std::string_view in_value, Rules in_rules);
/// Whether a line with this key and new value can be written: it is read back unchanged and has no
/// control characters.
bool IsCarriableLine(std::string_view in_key, std::string_view in_value,
                     Rules in_rules = Rules::FIRST_FILE);

}  // namespace Veltrane::ODBC::OdbcIniLine

#endif
