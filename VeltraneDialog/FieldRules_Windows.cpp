#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::ODBC {

const char* WhyNameTooLong(std::string_view, std::u16string_view in_units) {
    constexpr std::size_t MAX_UNITS = 32;  // SQL_MAX_DSN_LENGTH
    return in_units.size() > MAX_UNITS
               ? VELTRANE_TEXT("Too long: a name has at most 32 characters.")
               : nullptr;
}

}  // namespace Veltrane::ODBC
