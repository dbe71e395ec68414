#include "PlatformAbstraction/strings/NarrowForm.h"

#include <string_view>

#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"

namespace Orska::Support {

NarrowForm::NarrowForm(const orska_wstring& in_text) {
    const std::u16string_view units = in_text.GetView();
    if (units.size() <= sizeof(m_stack) && EncodingInfo::IsAsciiSuperset(GetAnsiEncoding()) &&
        NarrowText(units, 0x7F, m_stack)) {
        m_length = units.size();
        return;
    }
    m_heap = in_text.GetAsAnsiString();
    m_text = m_heap.data();
    m_length = m_heap.size();
}

}  // namespace Orska::Support
