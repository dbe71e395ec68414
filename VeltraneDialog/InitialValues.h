/// The initial values of a new DSN editor. A request without a window uses them as the values of
/// the DSN, so an administrator or a script can provision a DSN with a file.
///
/// The file is an INI file in UTF-8: the section "DSN" with the keys DSN, Server, Namespace,
/// LoginMode, UID, PWD and Database, in any case. Blanks around key and value do not count; a value
/// is the rest of its line, quotes and "#" included. Lines that begin with ";" or "#" are comments,
/// a later key replaces an earlier one, other sections are ignored. Any other line, an unknown key,
/// bytes that are not UTF-8 and a value that the editors refuse are errors.
#ifndef VELTRANEDIALOG_INITIALVALUES_H
#define VELTRANEDIALOG_INITIALVALUES_H

#include <optional>
#include <string>
#include <string_view>

namespace Veltrane::ODBC {

/// A text of the editor, in UTF-16; null if it has no value.
using DialogString = std::optional<std::u16string>;

/// The seven texts, in the order of the editor's fields. The destructor clears the password.
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

/// The administrator's file on Linux, used when VELTRANE_DSN_INITIAL_VALUES is not set; it can be
/// missing. On Windows it is dsn-defaults.ini beside the setup library.
constexpr char DEFAULT_INITIAL_VALUES_FILE[] = "/etc/veltrane/dsn-defaults.ini";

/// Reads the file named in the environment variable VELTRANE_DSN_INITIAL_VALUES (ignored in a
/// program with raised privileges), else the administrator's. Without a file the values are empty.
/// @throws std::runtime_error with file, reason and, if there is one, the line. The text never
///         contains a value.
DialogValues LoadInitialValues();

/// Parses the contents of such a file.
/// @param in_fileName  for error texts
/// @throws std::runtime_error as above
DialogValues ParseInitialValues(std::string_view in_contents, const std::string& in_fileName);

}  // namespace Veltrane::ODBC

#endif
