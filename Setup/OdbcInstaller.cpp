#include "Setup/OdbcInstaller.h"

#include <unicode/utf16.h>

namespace Veltrane::ODBC::OdbcInstaller {

orska_wstring CutToBuffer(orska_wstring in_text, int in_bufferSize) {
    std::int32_t length = in_bufferSize - 1;
    if (in_text.GetLength() <= length) return in_text;
    if (U16_IS_LEAD(in_text.GetView()[static_cast<std::size_t>(length) - 1])) --length;
    return in_text.Substring(0, length);
}

}  // namespace Veltrane::ODBC::OdbcInstaller
