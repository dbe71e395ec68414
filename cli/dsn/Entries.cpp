#include "cli/dsn/Entries.h"

#include <algorithm>

#include "cli/system/Words.h"

namespace Veltrane::Cli {

Entries::Entries(const std::vector<Entry>& in_lines) {
    for (const auto& [key, value] : in_lines) {
        if (Find(key) == nullptr) {
            m_entries.emplace_back(key, value);
        } else {
            m_repeated.insert(FoldName(key));
        }
    }
}

bool Entries::IsRepeated(std::string_view in_key) const {
    return m_repeated.contains(FoldName(in_key));
}

std::size_t Entries::PlaceOf(std::string_view in_key) const {
    constexpr std::size_t FEW = 16;
    if (m_entries.size() <= FEW) {
        const auto found = std::ranges::find_if(
            m_entries, [&](const Entry& in_it) { return IsSameName(in_it.first, in_key); });
        return static_cast<std::size_t>(found - m_entries.begin());
    }
    for (std::size_t i = m_places.size(); i < m_entries.size(); ++i) {
        m_places.emplace(FoldName(m_entries[i].first), i);
    }
    const auto found = m_places.find(FoldName(in_key));
    return found == m_places.end() ? m_entries.size() : found->second;
}

const std::string* Entries::Find(std::string_view in_key) const {
    const std::size_t place = PlaceOf(in_key);
    return place == m_entries.size() ? nullptr : &m_entries[place].second;
}

std::string Entries::Get(std::string_view in_key) const {
    const std::string* const value = Find(in_key);
    return value == nullptr ? std::string() : *value;
}

void Entries::Set(std::string_view in_key, std::string_view in_value) {
    const std::size_t place = PlaceOf(in_key);
    if (place == m_entries.size()) {
        m_entries.emplace_back(in_key, in_value);
    } else {
        m_entries[place].second = in_value;
    }
}

void Entries::Remove(const std::vector<std::string>& in_keys) {
    std::set<std::string> keys;
    for (const std::string& key : in_keys) keys.insert(FoldName(key));
    std::erase_if(m_entries,
                  [&keys](const Entry& in_it) { return keys.contains(FoldName(in_it.first)); });
    m_places.clear();
}

const ODBC::DialogField* FindField(std::string_view in_key) {
    for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
        if (field.m_key != "DSN" && EqualsIgnoringCase(field.m_key, in_key)) return &field;
    }
    return nullptr;
}

std::string CanonicalKey(std::string_view in_key) {
    const ODBC::DialogField* const field = FindField(in_key);
    return std::string(field == nullptr ? in_key : field->m_key);
}

bool IsSecretKey(std::string_view in_key) {
    const std::string key = FoldCase(in_key);
    constexpr std::string_view PARTS[] = {"pwd", "password", "passwd", "secret", "token", "apikey"};
    return std::ranges::any_of(
        PARTS, [&key](std::string_view in_part) { return key.find(in_part) != std::string::npos; });
}

std::string ShownValue(const Entry& in_entry, bool in_areSecretsShown) {
    const bool isMasked = !in_areSecretsShown && IsSecretKey(in_entry.first);
    return isMasked ? std::string(MASK) : in_entry.second;
}

std::string DescribeNearKey(std::string_view in_key) {
    if (FindField(in_key) != nullptr) return {};
    std::vector<std::string_view> keys;
    for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
        if (field.m_key != "DSN") keys.push_back(field.m_key);
    }
    const std::string_view near = FindNearWord(in_key, keys);
    if (near.empty()) return {};
    return "The driver has no key " + std::string(in_key) + "; did you mean " + std::string(near) +
           "?";
}

}  // namespace Veltrane::Cli
