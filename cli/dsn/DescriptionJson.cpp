#include <sstream>

#include "cli/dsn/Description.h"
#include "cli/dsn/StrictJson.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// @param in_place  of the description, for error texts
[[noreturn]] void Fail(const std::string& in_place, const std::string& in_reason) {
    FailWith(in_place + " " + in_reason + ".");
}

std::string ReadText(const std::string& in_place, const std::string& in_key,
                     const StrictJson& in_value) {
    if (!in_value.is_string()) Fail(in_place, "has " + Quote(in_key) + ", which is not a text");
    return in_value.get<std::string>();
}

void ReadValue(const std::string& in_place, const std::string& in_key, const StrictJson& in_value,
               DsnDescription& io_description) {
    if (io_description.m_values.Find(in_key) != nullptr) {
        Fail(in_place, "has the key " + Quote(in_key) + " twice");
    }
    const std::string key = CanonicalKey(in_key);
    if (in_value.is_null()) return io_description.m_unset.push_back(key);
    const bool isNumber = in_value.is_number_integer();
    const std::string text = isNumber ? in_value.dump() : ReadText(in_place, in_key, in_value);
    if (key == "PWD" && text.empty()) Fail(in_place, "has an empty \"PWD\"; null removes one");
    io_description.m_values.Set(key, text);
}

DsnDescription ReadDescription(const std::string& in_place, const StrictJson& in_object) {
    if (!in_object.is_object()) Fail(in_place, "is not an object");
    if (!in_object.contains("name")) Fail(in_place, "has no \"name\"");
    DsnDescription description;
    for (const auto& [key, value] : in_object.items()) {
        std::string* const member =
            key == "name" ? &description.m_name : FindMember(key, description);
        if (member != nullptr) {
            *member = ReadText(in_place, key, value);
        } else if (key == "values") {
            if (!value.is_object()) Fail(in_place, "has \"values\" that are not an object");
            for (const auto& [name, item] : value.items()) {
                ReadValue(in_place, name, item, description);
            }
        } else if (key != "scope") {
            Fail(in_place, "has the unknown member " + Quote(key));
        }
    }
    return description;
}

/// Describes where the parser stopped. The parser's own text would repeat what it last read.
std::string DescribePlace(std::string_view in_text, std::size_t in_byte) {
    const std::string_view before = in_text.substr(0, in_byte == 0 ? 0 : in_byte - 1);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t column = before.size() - (before.rfind('\n') + 1) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace

StrictJson ParseJsonDocument(std::string_view in_text, const std::string& in_source) {
    std::istringstream stream{std::string(in_text)};
    const auto fail = [&](std::size_t in_byte, const std::string& in_reason) {
        FailWith(in_source + ", " + DescribePlace(in_text, in_byte) + ": " + in_reason);
    };
    try {
        return StrictJson::parse(stream);
    } catch (const RepeatedKey& error) {
        fail(static_cast<std::size_t>(stream.tellg()),
             "the key " + Quote(error.m_key) + " occurs twice.");
    } catch (const StrictJson::parse_error& error) {
        fail(error.byte, "not JSON in UTF-8.");
    } catch (const StrictJson::out_of_range&) {
        // The exception's text would repeat the number, and has no place.
    }
    FailWith(in_source + ": a number that is out of range.");
}

Descriptions ParseJson(std::string_view in_text, const std::string& in_source) {
    const StrictJson document = ParseJsonDocument(in_text, in_source);
    const bool isObject = document.is_object() && document.contains("data_sources");
    const StrictJson& list = isObject ? document["data_sources"] : document;
    if (!list.is_array()) {
        FailWith(in_source + ": there is no list \"data_sources\".");
    }
    Descriptions descriptions;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string place = in_source + ": entry " + std::to_string(i + 1);
        descriptions.push_back(ReadDescription(place, list[i]));
    }
    return descriptions;
}

std::string FormatJson(const Descriptions& in_descriptions) {
    using Json = nlohmann::ordered_json;
    Json list = Json::array();
    for (const DsnDescription& description : in_descriptions) {
        Json::object_t values;
        for (const auto& [key, value] : description.m_values) values.emplace_back(key, value);
        list.push_back({{"name", description.m_name},
                        {"driver", description.m_driver},
                        {"values", std::move(values)}});
    }
    return Json{{"data_sources", std::move(list)}}.dump(2, ' ', false,
                                                        Json::error_handler_t::replace) +
           "\n";
}

}  // namespace Veltrane::Cli
