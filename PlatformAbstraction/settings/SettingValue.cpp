#include "PlatformAbstraction/settings/SettingValue.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Orska::Support {

namespace {

/// Compares the first code units that differ. It searches four at a time, because the keys of a
/// section often begin with the same text.
int CompareUnits(std::u16string_view in_left, std::u16string_view in_right) {
    static_assert(std::endian::native == std::endian::little);
    const std::size_t common = std::min(in_left.size(), in_right.size());
    std::size_t index = 0;
    for (; index + 4 <= common; index += 4) {
        std::uint64_t left = 0;
        std::uint64_t right = 0;
        std::memcpy(&left, in_left.data() + index, sizeof left);
        std::memcpy(&right, in_right.data() + index, sizeof right);
        if (left != right) {
            const int shift = std::countr_zero(left ^ right) / 16 * 16;
            return static_cast<int>((left >> shift) & 0xFFFF) -
                   static_cast<int>((right >> shift) & 0xFFFF);
        }
    }
    return in_left.substr(index).compare(in_right.substr(index));
}

}  // namespace

std::uint64_t SettingValue::GetNumber() const noexcept {
    if (const auto* number = std::get_if<std::uint32_t>(&m_value)) {
        return *number;
    }
    const auto* number = std::get_if<std::uint64_t>(&m_value);
    return number != nullptr ? *number : 0;
}

orska_wstring SettingValue::GetAsText() const {
    if (const auto* text = std::get_if<orska_wstring>(&m_value)) {
        return *text;
    }
    return orska_wstring(std::to_wstring(GetNumber()));
}

void SectionMap::Set(const orska_wstring& in_key, const SettingValue& in_value) {
    if (in_value.GetType() == SettingValue::Type::TEXT) {
        SetText(in_key.GetView(), in_value.GetAsText().GetView());
    } else {
        Add(in_key.GetView(), in_value.GetType(), in_value.GetNumber(), {});
    }
}

void SectionMap::SetText(std::u16string_view in_key, std::u16string_view in_text) {
    Add(in_key, SettingValue::Type::TEXT, in_text.size(), in_text);
}

void SectionMap::Add(std::u16string_view in_key, SettingValue::Type in_type,
                     std::uint64_t in_number, std::u16string_view in_text) {
    const std::size_t start = m_units.size();
    m_units.append(in_key).append(in_text);
    m_records.push_back({start, in_number, static_cast<std::uint32_t>(in_key.size()), in_type});
}

void SectionMap::Sort() const {
    if (m_sortedCount == m_records.size()) {
        return;
    }
    // Records of the same key are in the order in which they were added.
    const auto isBefore = [this](const Record& in_left, const Record& in_right) {
        const int order = CompareUnits(GetKey(in_left), GetKey(in_right));
        return order != 0 ? order < 0 : in_left.m_key < in_right.m_key;
    };
    const auto added = m_records.begin() + static_cast<std::ptrdiff_t>(m_sortedCount);
    std::sort(added, m_records.end(), isBefore);
    std::inplace_merge(m_records.begin(), added, m_records.end(), isBefore);
    // From the end, the first record of a key is the one added last. It stays.
    const auto isSame = [this](const Record& in_left, const Record& in_right) {
        return GetKey(in_left) == GetKey(in_right);
    };
    const auto firstKept = std::unique(m_records.rbegin(), m_records.rend(), isSame).base();
    m_records.erase(m_records.begin(), firstKept);
    m_sortedCount = m_records.size();
}

std::size_t SectionMap::GetSize() const {
    Sort();
    return m_records.size();
}

std::optional<SettingValue> SectionMap::Find(const orska_wstring& in_key) const {
    Sort();
    const auto found =
        std::lower_bound(m_records.begin(), m_records.end(), in_key.GetView(),
                         [this](const Record& in_record, std::u16string_view in_wanted) {
                             return GetKey(in_record) < in_wanted;
                         });
    if (found == m_records.end() || GetKey(*found) != in_key.GetView()) {
        return std::nullopt;
    }
    return GetValue(*found);
}

SectionMap::Entry SectionMap::GetEntry(std::size_t in_index) const {
    const Record& record = m_records[in_index];
    const std::u16string_view key = GetKey(record);
    return {orska_wstring(key.data(), key.size()), GetValue(record)};
}

SettingValue SectionMap::GetValue(const Record& in_record) const {
    switch (in_record.m_type) {
        case SettingValue::Type::UINT32:
            return SettingValue(static_cast<std::uint32_t>(in_record.m_number));
        case SettingValue::Type::UINT64:
            return SettingValue(in_record.m_number);
        default:
            return SettingValue(
                orska_wstring(m_units.data() + in_record.m_key + in_record.m_keyLength,
                              static_cast<std::size_t>(in_record.m_number)));
    }
}

std::u16string_view SectionMap::GetKey(const Record& in_record) const {
    return std::u16string_view(m_units).substr(in_record.m_key, in_record.m_keyLength);
}

}  // namespace Orska::Support
