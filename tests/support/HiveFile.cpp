#include "tests/support/HiveFile.h"

#include <gtest/gtest.h>
#include <hivex.h>

#include <cstdlib>
#include <sstream>

namespace Orska::Test {

namespace {

hive_node_h AddKey(hive_h* in_hive, const std::string& in_path) {
    hive_node_h node = hivex_root(in_hive);
    std::istringstream names(in_path);
    for (std::string name; std::getline(names, name, '\\');) {
        const hive_node_h child = hivex_node_get_child(in_hive, node, name.c_str());
        node = child != 0 ? child : hivex_node_add_child(in_hive, node, name.c_str());
        EXPECT_NE(node, 0u) << in_path;
    }
    return node;
}

}  // namespace

void WriteHive(const std::string& in_path, const std::vector<HiveKey>& in_keys) {
    const std::string command = std::string(ORSKA_NEW_HIVE) + " '" + in_path + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    hive_h* hive = hivex_open(in_path.c_str(), HIVEX_OPEN_WRITE);
    ASSERT_NE(hive, nullptr);
    for (const HiveKey& key : in_keys) {
        std::vector<HiveValue> values = key.m_values;
        std::vector<hive_set_value> set;
        for (HiveValue& value : values) {
            set.push_back({value.m_name.data(), static_cast<hive_type>(value.m_type),
                           value.m_data.size(), value.m_data.data()});
        }
        ASSERT_EQ(hivex_node_set_values(hive, AddKey(hive, key.m_path), set.size(), set.data(), 0),
                  0);
    }
    ASSERT_EQ(hivex_commit(hive, nullptr, 0), 0);
    ASSERT_EQ(hivex_close(hive), 0);
}

std::string HiveText(const std::u16string& in_text) {
    std::string bytes(reinterpret_cast<const char*>(in_text.data()),
                      in_text.size() * sizeof(char16_t));
    return bytes + std::string(2, '\0');
}

}  // namespace Orska::Test
