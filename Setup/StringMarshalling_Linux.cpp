#include "Setup/StringMarshalling.h"

namespace Veltrane::ODBC {

// There is no thread code page here.
void CheckThreadCodePage(std::u16string_view /*in_text*/) {}

}  // namespace Veltrane::ODBC
