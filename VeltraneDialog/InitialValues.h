/// The values that a new DSN editor starts with. Requests without a window take them as the values
/// of the DSN, so an administrator's or a script's file provisions a DSN.
///
/// The file is an INI file in UTF-8: the section "DSN" with the keys DSN, Server, Namespace,
/// LoginMode, UID, PWD and Database, in any case. Blanks around key and value do not count; a value
/// is everything else up to the end of its line, quotes and "#" included. Lines that begin with
/// ";" or "#" are comments, a later key replaces an earlier one, other sections are left alone. A
/// line that is none of these, an unknown key, a character that is not UTF-8 and a value that no
/// editor would take are errors.
#ifndef VELTRANEDIALOG_INITIALVALUES_H
#define VELTRANEDIALOG_INITIALVALUES_H

#include <optional>
#include <string>
#include <string_view>

namespace Veltrane::ODBC {

/// A text of the editor, in UTF-16; without a value it is null.
using DialogString = std::optional<std::u16string>;

/// The seven texts, in the order of the editor's fields. The memory of the password is cleared when
/// they go.
struct DialogValues {
    DialogValues() = default;
    DialogValues(const DialogValues&) = default;
    DialogValues& operator=(const DialogValues&) = default;
    DialogValues(DialogValues&&) = default;
    DialogValues& operator=(DialogValues&&) = default;
    ~DialogValues();

    DialogString m_dsn = u"";
    DialogString m_server = u"";
    DialogString m_cognosNamespace = u"";
    DialogString m_microStrategyLoginMode = u"";
    DialogString m_uid = u"";
    DialogString m_pwd = u"";
    DialogString m_database = u"";
};

/// The administrator's file on Linux, used when VELTRANE_DSN_INITIAL_VALUES is not set; it may be
/// absent. On Windows it is dsn-defaults.ini beside the setup library.
constexpr char DEFAULT_INITIAL_VALUES_FILE[] = "/etc/veltrane/dsn-defaults.ini";

/// Reads the file that the environment variable VELTRANE_DSN_INITIAL_VALUES names (ignored in a
/// program with raised privileges), else the administrator's, else gives empty values.
/// @throws std::runtime_error with file and reason, and the line where there is one. The text never
///         holds a value.
DialogValues LoadInitialValues();

/// Parses the contents of such a file.
/// @param in_fileName  for error texts
/// @throws std::runtime_error as above
DialogValues ParseInitialValues(std::string_view in_contents, const std::string& in_fileName);

}  // namespace Veltrane::ODBC

#endif
