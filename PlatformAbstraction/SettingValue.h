/// One value of a configuration source, as the readers produce it, and the maps that hold them.
/// Plain values: copied freely, used by one thread at a time.
#ifndef PLATFORMABSTRACTION_SETTINGVALUE_H
#define PLATFORMABSTRACTION_SETTINGVALUE_H

#include <cstdint>
#include <map>
#include <variant>

#include "PlatformAbstraction/orska_wstring.h"

namespace Orska::Support {

/// A text, an unsigned 32-bit number or an unsigned 64-bit number.
class SettingValue {
public:
    enum class Type { TEXT, UINT32, UINT64 };

    /// The NULL text.
    SettingValue() = default;
    explicit SettingValue(orska_wstring in_text) : m_value(std::move(in_text)) {}
    explicit SettingValue(std::uint32_t in_number) : m_value(in_number) {}
    explicit SettingValue(std::uint64_t in_number) : m_value(in_number) {}

    Type GetType() const noexcept { return static_cast<Type>(m_value.index()); }
    /// The text itself, or the number in decimal digits.
    orska_wstring GetAsText() const;

    friend bool operator==(const SettingValue&, const SettingValue&) = default;

private:
    std::variant<orska_wstring, std::uint32_t, std::uint64_t> m_value;
};

/// Key to value; ordered by code units.
using SectionMap = std::map<orska_wstring, SettingValue>;
/// Section name to its values.
using ConfigurationMap = std::map<orska_wstring, SectionMap>;

}  // namespace Orska::Support

#endif
