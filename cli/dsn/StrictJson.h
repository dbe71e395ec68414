/// JSON in which a key that occurs twice is an error. Internal.
#ifndef CLI_STRICTJSON_H
#define CLI_STRICTJSON_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <unordered_set>

namespace Veltrane::Cli {

struct RepeatedKey {
    std::string m_key;
};

/// The members of an object. The parser looks up each key as it reads it; the library's own map
/// then keeps the last of two values, which may be the wrong one.
template <typename Key, typename Value, typename Compare, typename Allocator>
struct MembersOnce : nlohmann::ordered_map<Key, Value, Compare, Allocator> {
    using Base = nlohmann::ordered_map<Key, Value, Compare, Allocator>;
    using Base::Base;
    Value& operator[](const Key& in_key) {
        const bool areFew = this->size() < 16;
        for (std::size_t i = m_keys.size(); !areFew && i < this->size(); ++i) {
            m_keys.insert(this->data()[i].first);
        }
        const bool isKnown = areFew ? this->find(in_key) != this->end() : m_keys.contains(in_key);
        if (isKnown) throw RepeatedKey{in_key};
        return this->emplace_back(in_key, Value{}).second;
    }

private:
    std::unordered_set<Key> m_keys;  ///< of many members: the library's own search takes too long
};
using StrictJson = nlohmann::basic_json<MembersOnce>;

/// @throws CommandError EXIT_FAILED with source and place; a repeated key is the only quoted text
StrictJson ParseJsonDocument(std::string_view in_text, const std::string& in_source);

}  // namespace Veltrane::Cli

#endif
