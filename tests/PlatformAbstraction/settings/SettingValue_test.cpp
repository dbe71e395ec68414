#include "PlatformAbstraction/settings/SettingValue.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "tests/support/SettingText.h"

namespace Orska::Support {
namespace {

using Test::ToText;

TEST(SectionMap, KeepsTheLastValueOfAKeyWhateverItsType) {
    SectionMap section;
    section.SetText(u"b", u"first");
    section.Set(L"a", SettingValue(std::uint32_t{1}));
    section.SetText(u"b", u"");
    EXPECT_EQ(ToText(section), "a:1;b=;");
    section.Set(L"b", SettingValue(~std::uint64_t{0}));
    section.SetText(u"a", u"text");
    const SectionMap copy = section;
    section.SetText(u"a", u"changed");
    EXPECT_EQ(ToText(copy), "a=text;b::18446744073709551615;");
    EXPECT_EQ(section.Find(L"A"), std::nullopt);
}

TEST(SectionMap, OrdersAsStringsDo) {
    // Lengths around the four units that are compared at once, surrogates, and units whose bytes
    // sort in reverse.
    std::mt19937 random(7);
    constexpr char16_t UNITS[] = u"ab\u0100\u00FF\uFFFD\U0001F600\u0001";
    std::map<orska_wstring, std::uint32_t> expected;
    SectionMap section;
    for (std::uint32_t number = 0; number < 2000; ++number) {
        std::u16string key(random() % 10, u'a');
        for (std::size_t index = key.size() - std::min<std::size_t>(key.size(), 3);
             index < key.size(); ++index) {
            key[index] = UNITS[random() % (std::size(UNITS) - 1)];
        }
        const orska_wstring name(key);
        expected[name] = number;
        section.Set(name, SettingValue(number));
        if (number % 97 == 0) {
            section.Sort();
        }
    }
    auto next = expected.begin();
    ASSERT_EQ(section.GetSize(), expected.size());
    for (const auto& [key, value] : section) {
        ASSERT_EQ(key, next->first);
        ASSERT_EQ(value, SettingValue(next->second));
        ASSERT_EQ(section.Find(key), value);
        ++next;
    }
}

}  // namespace
}  // namespace Orska::Support
