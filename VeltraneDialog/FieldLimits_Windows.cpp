#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/FieldLimits.h"

namespace Veltrane::ODBC {

namespace {

/// SQL_MAX_DSN_LENGTH, in code units of UTF-16.
constexpr std::size_t MAX_NAME_LENGTH = 32;

/// The registry holds more, but this is what the setup library reads back of a value.
constexpr std::size_t MAX_VALUE_LENGTH = 259;

}  // namespace

const char* WhyNameTooLong(std::string_view, std::u16string_view in_units) {
    return in_units.size() > MAX_NAME_LENGTH
               ? VELTRANE_TEXT("Too long: a name has at most 32 characters.")
               : nullptr;
}

const char* WhyValueTooLong(std::string_view, std::string_view, std::u16string_view in_units) {
    return in_units.size() > MAX_VALUE_LENGTH
               ? VELTRANE_TEXT("Too long: a value has at most 259 characters.")
               : nullptr;
}

}  // namespace Veltrane::ODBC
