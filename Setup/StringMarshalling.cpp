#include "Setup/StringMarshalling.h"

#include <climits>
#include <stdexcept>

#include "Exceptions/OrskaThrow.h"

namespace Veltrane::ODBC {

using Orska::Support::orska_wstring;
using Orska::Support::TraceSite;

namespace {

constexpr char SOURCE[] = "Setup\\StringMarshalling";

}  // namespace

void CheckEditorStringLength(std::size_t in_length) {
    if (in_length > static_cast<std::size_t>(INT_MAX)) {
        ORSKA_THROW((TraceSite{"Veltrane::ODBC::CheckEditorStringLength", SOURCE, 0}),
                    std::length_error("Size of string exceeds INT_MAX."));
    }
}

DialogString ToEditorString(const orska_wstring& in_text) {
    std::u16string text = in_text.GetAsUtf16();
    CheckEditorStringLength(text.size());
    return text;
}

orska_wstring FromEditorString(const DialogString& in_text) {
    if (!in_text) {
        return orska_wstring();
    }
    CheckThreadCodePage(*in_text);
    return orska_wstring(*in_text);
}

orska_wstring ToInstallerText(const char* in_message) {
    if (in_message == nullptr) {
        ORSKA_THROW((TraceSite{"Veltrane::ODBC::ToInstallerText", SOURCE, 0}),
                    std::invalid_argument("NULLPTR is not supported for this conversion."));
    }
    return orska_wstring().SetFromUtf8(in_message, orska_wstring::NUL_TERMINATED);
}

}  // namespace Veltrane::ODBC
