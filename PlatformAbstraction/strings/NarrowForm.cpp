#include "PlatformAbstraction/strings/NarrowForm.h"

#include <string_view>

#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"

namespace Orska::Support {

namespace {

/// Copies text that is all ASCII; false when it is not.
bool CopyAscii(std::u16string_view in_units, char* out_text) noexcept {
    unsigned all = 0;
    for (const char16_t unit : in_units) {
        all |= unit;
        *out_text++ = static_cast<char>(unit);
    }
    return all < 0x80;
}

}  // namespace

NarrowForm::NarrowForm(const orska_wstring& in_text) {
    const std::u16string_view units = in_text.GetView();
    if (units.size() <= sizeof(m_stack) && EncodingInfo::IsAsciiSuperset(GetAnsiEncoding()) &&
        CopyAscii(units, m_stack)) {
        m_length = units.size();
        return;
    }
    m_heap = in_text.GetAsAnsiString();
    m_text = m_heap.data();
    m_length = m_heap.size();
}

}  // namespace Orska::Support
