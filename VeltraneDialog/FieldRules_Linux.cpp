#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::ODBC {

const char* WhyNameTooLong(std::string_view in_name, std::u16string_view) {
    constexpr std::size_t MAX_BYTES = 32;  // of UTF-8, the limit of unixODBC
    return in_name.size() > MAX_BYTES
               ? VELTRANE_TEXT("Too long: a name has at most 32 bytes; some letters take several.")
               : nullptr;
}

}  // namespace Veltrane::ODBC
