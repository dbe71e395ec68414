#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/FieldLimits.h"

namespace Veltrane::ODBC {

namespace {

/// What the installer takes as a name, in bytes of UTF-8.
constexpr std::size_t MAX_NAME_LENGTH = 32;

/// The longest line of odbc.ini that is read back whole, in bytes of UTF-8, "key=" included.
constexpr std::size_t MAX_LINE_LENGTH = 999;

}  // namespace

const char* WhyNameTooLong(std::string_view in_name, std::u16string_view) {
    return in_name.size() > MAX_NAME_LENGTH
               ? VELTRANE_TEXT("Too long: a name has at most 32 bytes; some letters take several.")
               : nullptr;
}

const char* WhyValueTooLong(std::string_view in_key, std::string_view in_value,
                            std::u16string_view) {
    return in_key.size() + 1 + in_value.size() > MAX_LINE_LENGTH
               ? VELTRANE_TEXT("Too long: a line of odbc.ini has at most 999 bytes.")
               : nullptr;
}

}  // namespace Veltrane::ODBC
