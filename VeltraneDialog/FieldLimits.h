/// How long a name and a value may be: what the system's installer takes and gives back whole.
#ifndef VELTRANEDIALOG_FIELDLIMITS_H
#define VELTRANEDIALOG_FIELDLIMITS_H

#include <string_view>

namespace Veltrane::ODBC {

/// @param in_name   UTF-8
/// @param in_units  the same in UTF-16
/// @return the reason, in English (a key of the translations); null when it is not too long
const char* WhyNameTooLong(std::string_view in_name, std::u16string_view in_units);
const char* WhyValueTooLong(std::string_view in_key, std::string_view in_value,
                            std::u16string_view in_units);

}  // namespace Veltrane::ODBC

#endif
