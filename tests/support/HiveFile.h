/// Registry hive files for tests.
#ifndef TESTS_SUPPORT_HIVEFILE_H
#define TESTS_SUPPORT_HIVEFILE_H

#include <cstdint>
#include <string>
#include <vector>

namespace Orska::Test {

struct HiveValue {
    std::string m_name;  ///< UTF-8
    std::uint32_t m_type;
    std::string m_data;
};

struct HiveKey {
    std::string m_path;  ///< UTF-8, "\" between the names; its parents are added too
    std::vector<HiveValue> m_values;
};

/// Creates a hive, which must not exist yet, with these keys.
void WriteHive(const std::string& in_path, const std::vector<HiveKey>& in_keys);

/// Bytes of a REG_SZ value, with its NUL.
std::string HiveText(const std::u16string& in_text);

}  // namespace Orska::Test

#endif
