/// What may stand in a field: the one place for the checks of all editors and their reasons.
#ifndef VELTRANEDIALOG_FIELDRULES_H
#define VELTRANEDIALOG_FIELDRULES_H

#include <string_view>

#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::ODBC {

constexpr std::string_view CHARACTERS_NOT_IN_NAMES = "[]{}(),;?*=!@\\";

/// @param in_text  UTF-8
/// @return why the field cannot hold the text, in English (a key of the translations); null when it
///         can. A required field that is empty has a reason as well.
const char* WhyRefused(const DialogField& in_field, std::string_view in_text);

/// Whether the reason is only that nothing has been entered yet.
bool IsOnlyMissing(const DialogField& in_field, std::string_view in_text);

}  // namespace Veltrane::ODBC

#endif
