/// A registry in memory, linked instead of the system's; its calls fail on demand.
#ifndef TESTS_SUPPORT_REGISTRYKEY_FAKE_H
#define TESTS_SUPPORT_REGISTRYKEY_FAKE_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Orska::Test {

struct FakeRegistryValue {
    std::u16string m_name;
    std::uint32_t m_type;
    std::string m_data;
    bool m_enumFails = false;
};

struct FakeRegistryKey {
    std::vector<FakeRegistryValue> m_values;
    std::vector<std::u16string> m_subKeys;
    bool m_queryFails = false;
};

/// The keys of the process, by root ("HKCU" or "HKLM"), "\" and path as opened.
struct FakeRegistry {
    std::map<std::string, FakeRegistryKey> m_keys;
    std::vector<std::string> m_asked;  ///< keys that were opened or tried, in order
    int m_openKeys = 0;                ///< how many are open now

    static FakeRegistry& Get();
};

}  // namespace Orska::Test

#endif
