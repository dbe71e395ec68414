/// One line of an odbc.ini: what the readers of the driver managers, whose rules are told in
/// OdbcIniText.h, take from it, and what it can carry.
#ifndef SETUP_ODBCINILINE_H
#define SETUP_ODBCINILINE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Veltrane::ODBC::OdbcIniLine {

/// Most bytes of a line, without its end, that the reader takes as one.
inline constexpr std::size_t MAX_LINE = 999;

/// How the reader treats the file: as the only or first one, or as the system file whose
/// sections it appends to those of the user file. The latter counts a section or a key only
/// when it begins in the first column, and a key only when it begins with a letter or digit.
/// IODBC: as iODBC treats any file.
enum class Rules { FIRST_FILE, APPENDED_FILE, IODBC };

bool IsComment(char in_char);
/// What the reader sees of a piece.
std::string_view Seen(std::string_view in_piece, Rules in_rules);
std::string_view HeaderName(std::string_view in_piece);
/// Whether what looks like a section header is one to iODBC.
bool HasIodbcName(std::string_view in_piece);
std::string_view KeyName(std::string_view in_piece);
/// The key of what the reader sees of a line; nothing when it finds none.
std::optional<std::string_view> KeyOf(std::string_view in_piece, Rules in_rules);
std::string TextAfterEquals(std::string_view in_piece);
std::string ValueOf(std::string_view in_piece, Rules in_rules);

/// Whether a section of this name can be written and found again.
bool IsCarriableSection(std::string_view in_section);
/// Whether a line with this key and value is read back unchanged. Values that were read from
/// the file are.
bool IsReadBack(std::string_view in_key, std::string_view in_value, Rules in_rules);
/// Whether a line with this key and new value may be written: one that is read back unchanged
/// and has no control characters.
bool IsCarriableLine(std::string_view in_key, std::string_view in_value,
                     Rules in_rules = Rules::FIRST_FILE);

}  // namespace Veltrane::ODBC::OdbcIniLine

#endif
