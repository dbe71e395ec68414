/// Setting maps as text for comparison.
#ifndef TESTS_SUPPORT_SETTINGTEXT_H
#define TESTS_SUPPORT_SETTINGTEXT_H

#include <string>

#include "PlatformAbstraction/settings/SettingValue.h"

namespace Orska::Test {

/// "KEY=text;NUMBER:6;LARGE::7;" in the map's order: ":" marks a 32-bit number, "::" a 64-bit one.
inline std::string ToText(const Support::SectionMap& in_section) {
    constexpr const char* MARKS[] = {"=", ":", "::"};
    std::string text;
    for (const auto& [key, value] : in_section) {
        text += key.GetAsUtf8() + MARKS[static_cast<int>(value.GetType())] +
                value.GetAsText().GetAsUtf8() + ";";
    }
    return text;
}

/// A section with one number in it.
inline Support::SectionMap MakeSection(const Support::orska_wstring& in_key,
                                       std::uint32_t in_number) {
    Support::SectionMap section;
    section.Set(in_key, Support::SettingValue(in_number));
    return section;
}

/// "[SECTION]KEY=text;[OTHER]".
inline std::string ToText(const Support::ConfigurationMap& in_configuration) {
    std::string text;
    for (const auto& [name, section] : in_configuration) {
        text += "[" + name.GetAsUtf8() + "]" + ToText(section);
    }
    return text;
}

}  // namespace Orska::Test

#endif
