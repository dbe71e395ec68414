/// The keys and values of a DSN, in UTF-8 and in their original order, and the tool's knowledge of
/// keys. Keys are compared as in the profile (ODBC::FoldName).
#ifndef CLI_ENTRIES_H
#define CLI_ENTRIES_H

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "PlatformAbstraction/base/Ascii.h"
#include "Setup/Profile.h"
#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::Cli {

using Entry = std::pair<std::string, std::string>;

using ODBC::FoldName;
using ODBC::IsSameName;
using Orska::Support::EqualsIgnoringCase;
using Orska::Support::FoldCase;

class Entries {
public:
    Entries(std::initializer_list<Entry> in_entries = {}) : m_entries(in_entries) {}
    /// If a key occurs twice, the first line counts, as for the driver manager. Later lines are
    /// only noted as repeated.
    explicit Entries(const std::vector<Entry>& in_lines);

    /// Returns null if there is no such key; valid until the next change.
    const std::string* Find(std::string_view in_key) const;
    /// Returns the value; empty if there is no such key.
    std::string Get(std::string_view in_key) const;
    void Set(std::string_view in_key, std::string_view in_value);
    void Remove(const std::vector<std::string>& in_keys);

    /// Whether the key occurs again in the section. No program reads the repeated lines.
    bool IsRepeated(std::string_view in_key) const;

    bool IsEmpty() const { return m_entries.empty(); }
    auto begin() const { return m_entries.begin(); }
    auto end() const { return m_entries.end(); }

private:
    /// Returns the index of the entry with this key; the number of entries if there is none.
    std::size_t PlaceOf(std::string_view in_key) const;

    std::vector<Entry> m_entries;
    /// The indexes of the entries by folded key, filled by searches among many entries.
    mutable std::unordered_map<std::string, std::size_t> m_places;
    std::set<std::string> m_repeated;  ///< keys, folded
};

/// Returns the field of a key, in any case; null for a key that the setup library does not write.
const ODBC::DialogField* FindField(std::string_view in_key);
/// Returns a field's key in the setup library's spelling; any other key unchanged.
std::string CanonicalKey(std::string_view in_key);
/// Whether the value is masked: the password, and similar keys of other programs.
bool IsSecretKey(std::string_view in_key);

inline constexpr std::string_view MASK = "********";

/// Returns the value to show: masked if it is secret.
std::string ShownValue(const Entry& in_entry, bool in_areSecretsShown);

/// Returns "The driver has no key Sever; did you mean Server?"; empty if no known key is similar.
std::string DescribeNearKey(std::string_view in_key);

}  // namespace Veltrane::Cli

#endif
