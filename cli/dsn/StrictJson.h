/// JSON in which a key that occurs twice is an error. Internal.
#ifndef CLI_STRICTJSON_H
#define CLI_STRICTJSON_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

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
        const auto [place, isNew] = this->emplace(in_key, Value{});
        if (!isNew) throw RepeatedKey{in_key};
        return place->second;
    }
};
using StrictJson = nlohmann::basic_json<MembersOnce>;

/// @throws CommandError EXIT_FAILED with source and place; a repeated key is the only quoted text
StrictJson ParseJsonDocument(std::string_view in_text, const std::string& in_source);

}  // namespace Veltrane::Cli

#endif
