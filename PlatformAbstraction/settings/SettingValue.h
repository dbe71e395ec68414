/// One value of a configuration source, as the readers produce it, and the maps that hold them.
/// Plain values: copied freely, used by one thread at a time.
#ifndef PLATFORMABSTRACTION_SETTINGVALUE_H
#define PLATFORMABSTRACTION_SETTINGVALUE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "../strings/orska_wstring.h"

namespace Orska::Support {

/// A text, an unsigned 32-bit number or an unsigned 64-bit number.
class SettingValue {
public:
    enum class Type : std::uint32_t { TEXT, UINT32, UINT64 };

    explicit SettingValue(orska_wstring in_text) : m_value(std::move(in_text)) {}
    explicit SettingValue(std::uint32_t in_number) : m_value(in_number) {}
    explicit SettingValue(std::uint64_t in_number) : m_value(in_number) {}

    Type GetType() const noexcept { return static_cast<Type>(m_value.index()); }
    /// The text itself, or the number in decimal digits.
    orska_wstring GetAsText() const;
    /// The number in either width; 0 for a text.
    std::uint64_t GetNumber() const noexcept;

    friend bool operator==(const SettingValue&, const SettingValue&) = default;

private:
    std::variant<orska_wstring, std::uint32_t, std::uint64_t> m_value;
};

/// Key to value, ordered by the code units of the keys.
///
/// All texts of a section are in one block and its entries in another, so that a large file loads
/// with few allocations. Strings are made when a caller asks for them. The next call that reads
/// sorts in the added values.
class SectionMap {
public:
    using Entry = std::pair<orska_wstring, SettingValue>;

    class Iterator {
    public:
        Iterator(const SectionMap& in_map, std::size_t in_index)
            : m_map(&in_map), m_index(in_index) {}
        Entry operator*() const { return m_map->GetEntry(m_index); }
        Iterator& operator++() {
            ++m_index;
            return *this;
        }
        bool operator!=(const Iterator& in_other) const { return m_index != in_other.m_index; }

    private:
        const SectionMap* m_map;
        std::size_t m_index;
    };

    /// Stores a value and replaces an earlier one of the same key. NULL counts as empty.
    void Set(const orska_wstring& in_key, const SettingValue& in_value);
    void SetText(std::u16string_view in_key, std::u16string_view in_text);

    /// Sorts in the added values now, not at the next read.
    void Sort() const;

    std::size_t GetSize() const;
    /// The value of a key, or nothing.
    std::optional<SettingValue> Find(const orska_wstring& in_key) const;
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, GetSize()}; }

private:
    /// The code units of a text follow those of its key.
    struct Record {
        std::size_t m_key;       ///< where the key starts
        std::uint64_t m_number;  ///< or the length of the text
        std::uint32_t m_keyLength;
        SettingValue::Type m_type;
    };

    Entry GetEntry(std::size_t in_index) const;
    SettingValue GetValue(const Record& in_record) const;
    std::u16string_view GetKey(const Record& in_record) const;
    void Add(std::u16string_view in_key, SettingValue::Type in_type, std::uint64_t in_number,
             std::u16string_view in_text);

    std::u16string m_units;
    /// Sorted and without duplicates up to m_sortedCount, then in the order of adding.
    mutable std::vector<Record> m_records;
    mutable std::size_t m_sortedCount = 0;
};

/// Section name to its values; ordered by code units.
using ConfigurationMap = std::map<orska_wstring, SectionMap>;

}  // namespace Orska::Support

#endif
