#include "PlatformAbstraction/SettingValue.h"

#include <string>

namespace Orska::Support {

orska_wstring SettingValue::GetAsText() const {
    if (const auto* text = std::get_if<orska_wstring>(&m_value)) {
        return *text;
    }
    const auto* number = std::get_if<std::uint32_t>(&m_value);
    return orska_wstring(std::to_wstring(number ? *number : std::get<std::uint64_t>(m_value)));
}

}  // namespace Orska::Support
