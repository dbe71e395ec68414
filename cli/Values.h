/// The keys and values of one DSN.
#ifndef CLI_VALUES_H
#define CLI_VALUES_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Veltrane::Cli {

/// Overwrites a text that was a secret, in a way that the compiler does not drop.
void Wipe(std::string& io_text);

/// Keys compare without regard to ASCII case, as the driver manager does.
bool IsSameKey(std::string_view in_a, std::string_view in_b);
/// Below 0, 0 or above 0: an order that goes with IsSameKey.
int CompareKeys(std::string_view in_a, std::string_view in_b);
/// Whether values of this key are shown masked.
bool IsSecret(std::string_view in_key);
/// Whether the setup component stores this key itself. Its saving drops the others.
bool IsKnown(std::string_view in_key);
/// What is shown in place of a secret.
constexpr char MASK[] = "********";

/// Values by key, in order, in UTF-8. Overwrites its secrets when it ends.
class Values {
public:
    using Item = std::pair<std::string, std::string>;

    Values() = default;
    Values(const Values&) = default;
    Values& operator=(const Values&) = delete;
    ~Values();

    /// Null when there is no such key.
    const std::string* Find(std::string_view in_key) const;
    /// A known key takes the spelling of the setup component.
    void Set(std::string_view in_key, std::string_view in_value);
    void Remove(std::string_view in_key);
    std::vector<Item>::const_iterator begin() const { return m_items.begin(); }
    std::vector<Item>::const_iterator end() const { return m_items.end(); }

private:
    std::vector<Item> m_items;
};

/// Splits "KEY=VALUE"; the value may be empty.
/// @throws CommandError (usage)
Values::Item ParseAssignment(const std::string& in_text);

/// The pairs of a connection string: KEY=VALUE;KEY={VALUE}; in braces "}}" stands for "}".
/// @throws CommandError (usage); the text never holds a value
Values ParseConnectionString(std::string_view in_text);

}  // namespace Veltrane::Cli

#endif
