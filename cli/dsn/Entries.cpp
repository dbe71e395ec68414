#include "cli/dsn/Entries.h"

#include <algorithm>

#include "cli/system/Words.h"

namespace Veltrane::Cli {

Entries::Entries(const std::vector<Entry>& in_lines) {
    for (const auto& [key, value] : in_lines) {
        if (Find(key) == nullptr) {
            m_entries.emplace_back(key, value);
        } else {
            m_repeated.push_back(key);
        }
    }
}

bool Entries::IsRepeated(std::string_view in_key) const {
    return std::any_of(m_repeated.begin(), m_repeated.end(), [in_key](const std::string& in_each) {
        return IsSameName(in_each, in_key);
    });
}

const std::string* Entries::Find(std::string_view in_key) const {
    for (const Entry& entry : m_entries) {
        if (IsSameName(entry.first, in_key)) return &entry.second;
    }
    return nullptr;
}

std::string Entries::Get(std::string_view in_key) const {
    const std::string* const value = Find(in_key);
    return value == nullptr ? std::string() : *value;
}

void Entries::Set(std::string_view in_key, std::string_view in_value) {
    for (Entry& entry : m_entries) {
        if (IsSameName(entry.first, in_key)) {
            entry.second = in_value;
            return;
        }
    }
    m_entries.emplace_back(in_key, in_value);
}

void Entries::Remove(std::string_view in_key) {
    std::erase_if(m_entries,
                  [in_key](const Entry& in_entry) { return IsSameName(in_entry.first, in_key); });
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
    return std::any_of(std::begin(PARTS), std::end(PARTS), [&key](std::string_view in_part) {
        return key.find(in_part) != std::string::npos;
    });
}

std::string ShownValue(const Entry& in_entry, bool in_areSecretsShown) {
    const bool isMasked = !in_areSecretsShown && IsSecretKey(in_entry.first);
    return isMasked ? std::string(MASK) : in_entry.second;
}

std::string DescribeNearKey(std::string_view in_key) {
    const std::string_view near = FindNearWord(in_key, FIELD_KEYS);
    if (near.empty()) return {};
    return "The driver has no key " + std::string(in_key) + "; did you mean " + std::string(near) +
           "?";
}

}  // namespace Veltrane::Cli
