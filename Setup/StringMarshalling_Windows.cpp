#include "tools/WindowsApi.h"

#include <stdexcept>

#include "Exceptions/OrskaThrow.h"
#include "Setup/StringMarshalling.h"

namespace Veltrane::ODBC {

using Orska::Support::TraceSite;

namespace {

/// Returns the size of the text in the thread's code page, in bytes; 0 when it cannot be converted.
int Measure(std::u16string_view in_text, DWORD in_flags) {
    return WideCharToMultiByte(CP_THREAD_ACP, in_flags,
                               reinterpret_cast<const wchar_t*>(in_text.data()),
                               static_cast<int>(in_text.size()), nullptr, 0, nullptr, nullptr);
}

bool IsConvertible(std::u16string_view in_text) {
    if (Measure(in_text, WC_NO_BEST_FIT_CHARS) != 0) return true;
    // Code pages without best fits, such as UTF-8, reject the flag whatever the text is.
    return GetLastError() == ERROR_INVALID_FLAGS && Measure(in_text, 0) != 0;
}

}  // namespace

void CheckThreadCodePage(std::u16string_view in_text) {
    CheckEditorStringLength(in_text.size());
    if (!in_text.empty() && !IsConvertible(in_text)) {
        ORSKA_THROW(
            (TraceSite{"Veltrane::ODBC::CheckThreadCodePage", "Setup\\StringMarshalling", 0}),
            std::range_error("Conversion from WideChar to MultiByte failed.  Please check "
                             "the content of the string and/or locale settings."));
    }
}

}  // namespace Veltrane::ODBC
