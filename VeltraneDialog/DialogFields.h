/// The table of a data source's fields, for the record, the editors, the file of initial values and
/// the tool, and the other texts of the form. Texts are English and are the keys of the
/// translations; an ampersand precedes the accelerator of a field. Read-only, so thread-safe.
#ifndef VELTRANEDIALOG_DIALOGFIELDS_H
#define VELTRANEDIALOG_DIALOGFIELDS_H

#include <array>
#include <cstddef>
#include <string_view>

#include "VeltraneDialog/InitialValues.h"

/// Marks a text for translation without translating it here.
#define VELTRANE_TEXT(text) text

namespace Veltrane::ODBC {

enum class DialogFieldKind { TEXT, PASSWORD, LOGIN_MODE };

struct DialogField {
    /// The key of the value in odbc.ini and in the file of initial values.
    std::string_view m_key;
    DialogString DialogValues::*m_value;
    DialogFieldKind m_kind;
    bool m_isRequired;
    int m_place;  ///< in a form, from 0
    const char* m_label;
    const char* m_hint;
};

/// The order is fixed: host and editor exchange the texts in it.
inline constexpr auto DIALOG_FIELDS = std::to_array<DialogField>({
    {"DSN", &DialogValues::m_dsn, DialogFieldKind::TEXT, true, 0, VELTRANE_TEXT("&Name"),
     VELTRANE_TEXT("The name under which programs find this data source.")},
    {"Server", &DialogValues::m_server, DialogFieldKind::TEXT, true, 1, VELTRANE_TEXT("&Server"),
     VELTRANE_TEXT("The computer on which the BI server runs: its name or address.")},
    {"Namespace", &DialogValues::m_cognosNamespace, DialogFieldKind::TEXT, false, 5,
     VELTRANE_TEXT("Cognos na&mespace"),
     VELTRANE_TEXT("Only for a Cognos server: the namespace in which the user signs in.")},
    {"LoginMode", &DialogValues::m_microStrategyLoginMode, DialogFieldKind::LOGIN_MODE, false, 6,
     VELTRANE_TEXT("MicroStrategy &login mode"),
     VELTRANE_TEXT("Only for a MicroStrategy server: how the user signs in.")},
    {"UID", &DialogValues::m_uid, DialogFieldKind::TEXT, false, 3, VELTRANE_TEXT("&User name"),
     VELTRANE_TEXT("Left empty, programs ask for it when they connect.")},
    {"PWD", &DialogValues::m_pwd, DialogFieldKind::PASSWORD, false, 4, VELTRANE_TEXT("&Password"),
     VELTRANE_TEXT("Stored as clear text; left empty, programs ask for it.")},
    {"Database", &DialogValues::m_database, DialogFieldKind::TEXT, true, 2,
     VELTRANE_TEXT("Data&base"), VELTRANE_TEXT("The database on that server.")},
});

/// Returns the index of a key in `DIALOG_FIELDS`. An unknown key does not compile.
consteval std::size_t FieldIndex(std::string_view in_key) {
    std::size_t index = 0;
    while (DIALOG_FIELDS.at(index).m_key != in_key) ++index;
    return index;
}

/// The order of the fields in a form: indices into `DIALOG_FIELDS`.
inline constexpr auto DISPLAY_ORDER = [] {
    std::array<std::size_t, DIALOG_FIELDS.size()> order{};
    for (std::size_t i = 0; i < order.size(); ++i) {
        order.at(static_cast<std::size_t>(DIALOG_FIELDS[i].m_place)) = i;
    }
    return order;
}();

/// Suggestions for the login mode; any other text is allowed. Stored as they are, never translated.
inline constexpr std::array<const char*, 3> LOGIN_MODES{"Standard", "LDAP", "Windows"};

inline constexpr char TEXT_TITLE_NEW[] = VELTRANE_TEXT("New data source");
/// The parameter is the name of the data source.
inline constexpr char TEXT_TITLE[] = VELTRANE_TEXT("Data source %s");
inline constexpr char TEXT_SHOW_PASSWORD[] = VELTRANE_TEXT("S&how password");
inline constexpr char TEXT_REQUIRED[] = VELTRANE_TEXT("* has to be filled");
inline constexpr char TEXT_OK[] = VELTRANE_TEXT("&OK");
inline constexpr char TEXT_CANCEL[] = VELTRANE_TEXT("&Cancel");
inline constexpr char TEXT_YES[] = VELTRANE_TEXT("&Yes");
inline constexpr char TEXT_NO[] = VELTRANE_TEXT("&No");
inline constexpr char TEXT_TEST[] = VELTRANE_TEXT("&Test");
/// Replaces TEXT_TEST while a test runs.
inline constexpr char TEXT_STOP[] = VELTRANE_TEXT("S&top");
/// The parameter is the name of the data source.
inline constexpr char TEXT_TESTING[] = VELTRANE_TEXT("Connecting to %s ...");
/// The parameter is the old name.
inline constexpr char TEXT_REMOVE_OLD[] =
    VELTRANE_TEXT("The data source gets a new name. Remove the old one, %s?");
/// The parameter is the reason why the values could not be saved.
inline constexpr char TEXT_DISCARD[] = VELTRANE_TEXT("Not saved. %s Discard the values?");

}  // namespace Veltrane::ODBC

#endif
