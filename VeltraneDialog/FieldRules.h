/// The checks of a field's text and the reasons of a refusal, for all editors.
#ifndef VELTRANEDIALOG_FIELDRULES_H
#define VELTRANEDIALOG_FIELDRULES_H

#include <cstddef>
#include <string_view>

#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::ODBC {

constexpr std::string_view CHARACTERS_NOT_IN_NAMES = "[]{}(),;?*=!@\\";

/// The length of a stored value that a request reads, in UTF-16 code units. Longer new text is
/// refused, because it could not be read back.
constexpr std::size_t MAX_VALUE_LENGTH = 259;

/// Whether the driver managers use a section of this name themselves, ignoring ASCII case. No data
/// source can have such a name.
bool IsReservedName(std::string_view in_name);

/// @param in_text  UTF-8
/// @return why the field refuses this new text, in English (a key of the translations); null if it
///         accepts the text. An empty required field is refused too.
const char* WhyRefused(const DialogField& in_field, std::string_view in_text);

/// The same for a field of a form. An unchanged value that was loaded is accepted, even if nobody
/// could enter it. The store writes it back as it was.
/// @param in_loaded  the values that the form began with
const char* WhyRefused(const DialogField& in_field, std::string_view in_text,
                       const DialogValues& in_loaded);

/// Whether the only reason of a refusal is that nothing was entered yet.
bool IsOnlyMissing(const DialogField& in_field, std::string_view in_text);

/// Returns why a name is too long for the installer of this system; null if it is not.
/// @param in_name   UTF-8
/// @param in_units  the same in UTF-16
const char* WhyNameTooLong(std::string_view in_name, std::u16string_view in_units);

}  // namespace Veltrane::ODBC

#endif
