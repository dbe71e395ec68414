/// What may be in a field: the one place for the checks of all editors and their reasons.
#ifndef VELTRANEDIALOG_FIELDRULES_H
#define VELTRANEDIALOG_FIELDRULES_H

#include <cstddef>
#include <string_view>

#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::ODBC {

constexpr std::string_view CHARACTERS_NOT_IN_NAMES = "[]{}(),;?*=!@\\";

/// What a request reads of a stored value, in UTF-16 code units. Longer new text could never be
/// read back, so it is refused.
constexpr std::size_t MAX_VALUE_LENGTH = 259;

/// Whether the driver managers have a section of this name for themselves, in any case (ASCII). No
/// data source may have it: the one list for the library, the editors and the tool.
bool IsReservedName(std::string_view in_name);

/// @param in_text  UTF-8
/// @return why the field cannot take this new text, in English (a key of the translations); null
///         when it can. A required field that is empty has a reason as well.
const char* WhyRefused(const DialogField& in_field, std::string_view in_text);

/// The same for the fields of a form: a value that was loaded passes as long as it is not changed,
/// also one that nobody could enter. The store writes it back as it was.
/// @param in_loaded  what the form began with
const char* WhyRefused(const DialogField& in_field, std::string_view in_text,
                       const DialogValues& in_loaded);

/// Whether the reason is only that nothing has been entered yet.
bool IsOnlyMissing(const DialogField& in_field, std::string_view in_text);

/// What the system's installer takes as the length of a name; the part of the rules that differs.
/// @param in_name   UTF-8
/// @param in_units  the same in UTF-16
const char* WhyNameTooLong(std::string_view in_name, std::u16string_view in_units);

}  // namespace Veltrane::ODBC

#endif
