#include "Setup/OdbcIniLine.h"

#include <algorithm>

#include "PlatformAbstraction/base/Ascii.h"

namespace Veltrane::ODBC::OdbcIniLine {

namespace {

using Orska::Support::IsAsciiBlank;
using Orska::Support::IsAsciiLetterOrDigit;
using Orska::Support::Trim;
using Orska::Support::TrimLeft;

/// True for control characters, and for U+0080 to U+009F in UTF-8.
bool HasControlCharacter(std::string_view in_text) {
    const auto isPlain = [](char in_char) { return in_char >= 0x20 && in_char < 0x7F; };
    if (std::all_of(in_text.begin(), in_text.end(), isPlain)) return false;
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

constexpr std::string_view QUOTES = "'\"";

/// A line that begins with a blank continues the line before.
bool IsIodbcKeyLine(std::string_view in_piece) {
    return !IsAsciiBlank(in_piece.front()) && in_piece.front() != '[' &&
           in_piece.find('=') != std::string_view::npos;
}

/// Returns a key as iODBC compares it.
std::string_view Unquote(std::string_view in_key) {
    in_key.remove_prefix(std::min(in_key.find_first_not_of(QUOTES), in_key.size()));
    return in_key.substr(0, in_key.find_first_of(QUOTES));
}

/// iODBC does not count a vertical tab as a blank.
constexpr std::string_view IODBC_BLANKS = " \t\n\f\r";

/// iODBC cuts the blanks at the end of a line when it finds the line's end.
std::string_view TrimIodbcValue(std::string_view in_value, bool in_isEnded = true) {
    in_value.remove_prefix(std::min(in_value.find_first_not_of(IODBC_BLANKS), in_value.size()));
    return in_isEnded ? in_value.substr(0, in_value.find_last_not_of(IODBC_BLANKS) + 1) : in_value;
}

/// Returns how many bytes of a trimmed value iODBC reads. The rest is a comment.
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
            // Before a comment a vertical tab counts as a blank after all.
            while (i > 0 && IsAsciiBlank(in_value[i - 1])) --i;
            return i;
        }
    }
    return in_value.size();
}

bool HasOuterBlank(std::string_view in_text) {
    return !in_text.empty() && (IsAsciiBlank(in_text.front()) || IsAsciiBlank(in_text.back()));
}

/// Whether the reader would end the line inside the text.
bool HasLineEnd(std::string_view in_text, Rules in_rules) {
    return in_text.find_first_of(LineEnds(in_rules)) != std::string_view::npos ||
           in_text.find('\0') != std::string_view::npos;
}

/// Whether a key and a value without line ends are read back unchanged.
bool IsReadBackWhole(std::string_view in_key, std::string_view in_value, Rules in_rules) {
    const bool isKey = !in_key.empty() && !IsComment(in_key.front()) && in_key.front() != '[' &&
                       in_key.find('=') == std::string_view::npos && !HasOuterBlank(in_key);
    if (in_rules != Rules::IODBC) {
        return isKey && !HasOuterBlank(in_value) && in_key.size() + 1 + in_value.size() <= MAX_LINE;
    }
    return isKey && Unquote(in_key) == in_key && TrimIodbcValue(in_value) == in_value &&
           IodbcValueSize(in_value) == in_value.size();
}

}  // namespace

std::string_view Seen(std::string_view in_piece, Rules in_rules) {
    in_piece = in_piece.substr(0, in_piece.find('\0'));
    return in_rules == Rules::IODBC ? in_piece.substr(0, in_piece.find_first_of(LineEnds(in_rules)))
                                    : in_piece;
}

std::string_view HeaderName(std::string_view in_piece) {
    in_piece = TrimLeft(in_piece).substr(1);
    return Trim(in_piece.substr(0, in_piece.find(']')));
}

std::string_view KeyName(std::string_view in_piece) {
    return Trim(in_piece.substr(0, in_piece.find('=')));
}

bool HasIodbcName(std::string_view in_piece) {
    return in_piece.find(']') != std::string_view::npos && !HeaderName(in_piece).empty();
}

std::optional<std::string_view> KeyOf(std::string_view in_piece, Rules in_rules) {
    if (in_rules == Rules::FIRST_FILE) in_piece = TrimLeft(in_piece);
    if (in_piece.empty() || IsComment(in_piece.front())) return std::nullopt;
    if (in_rules == Rules::APPENDED_FILE && !IsAsciiLetterOrDigit(in_piece.front())) {
        return std::nullopt;
    }
    if (in_rules == Rules::IODBC && !IsIodbcKeyLine(in_piece)) return std::nullopt;
    const std::string_view key = KeyName(in_piece);
    return in_rules == Rules::IODBC ? Unquote(key) : key;
}

std::string TextAfterEquals(std::string_view in_piece) {
    const std::size_t equals = in_piece.find('=');
    if (equals == std::string_view::npos) return {};
    return std::string(Trim(in_piece.substr(equals + 1)));
}

std::string ValueOf(std::string_view in_piece, Rules in_rules, bool in_isEnded) {
    if (in_rules != Rules::IODBC) return TextAfterEquals(in_piece);
    std::string value(TrimIodbcValue(in_piece.substr(in_piece.find('=') + 1), in_isEnded));
    value.resize(IodbcValueSize(value));
    return value;
}

bool IsCarriableSection(std::string_view in_section) {
    return !in_section.empty() && in_section.size() + 2 <= MAX_LINE &&
           in_section.find(']') == std::string_view::npos && !HasOuterBlank(in_section) &&
           !HasControlCharacter(in_section);
}

bool IsCarriableLine(std::string_view in_key, std::string_view in_value, Rules in_rules) {
    // A line end is a control character.
    return !HasControlCharacter(in_key) && !HasControlCharacter(in_value) &&
           in_key.size() + 1 + in_value.size() <= MAX_LINE &&
           IsReadBackWhole(in_key, in_value, in_rules);
}

bool IsReadBack(std::string_view in_key, std::string_view in_value, Rules in_rules) {
    return !HasLineEnd(in_key, in_rules) && !HasLineEnd(in_value, in_rules) &&
           IsReadBackWhole(in_key, in_value, in_rules);
}

}  // namespace Veltrane::ODBC::OdbcIniLine
