#include <sstream>

#include "cli/dsn/Description.h"
#include "cli/dsn/StrictJson.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// Reads one description, and keeps its place for error texts.
class Reader {
public:
    Reader(const std::string& in_source, std::size_t in_index)
        : m_place(in_source + ": entry " + std::to_string(in_index + 1)) {}

    DsnDescription Run(const StrictJson& in_object) {
        if (!in_object.is_object()) Fail("is not an object");
        if (!in_object.contains("name")) Fail("has no \"name\"");
        for (const auto& [key, value] : in_object.items()) ReadMember(key, value);
        return std::move(m_description);
    }

private:
    void ReadMember(const std::string& in_key, const StrictJson& in_value) {
        if (in_key == "name") {
            m_description.m_name = Text(in_key, in_value);
        } else if (std::string* const member = FindMember(in_key, m_description)) {
            *member = Text(in_key, in_value);
        } else if (in_key == "values") {
            if (!in_value.is_object()) Fail("has \"values\" that are not an object");
            for (const auto& [key, value] : in_value.items()) ReadValue(key, value);
        } else if (in_key != "scope") {
            Fail("has the unknown member " + Quote(in_key));
        }
    }

    void ReadValue(const std::string& in_key, const StrictJson& in_value) {
        if (m_description.m_values.Find(in_key) != nullptr) {
            Fail("has the key " + Quote(in_key) + " twice");
        }
        const std::string key = CanonicalKey(in_key);
        if (in_value.is_null()) {
            m_description.m_unset.push_back(key);
        } else if (in_value.is_number_integer()) {
            m_description.m_values.Set(key, in_value.dump());
        } else {
            const std::string text = Text(in_key, in_value);
            if (key == "PWD" && text.empty()) Fail("has an empty \"PWD\"; null removes one");
            m_description.m_values.Set(key, text);
        }
    }

    std::string Text(const std::string& in_key, const StrictJson& in_value) const {
        if (!in_value.is_string()) Fail("has " + Quote(in_key) + ", which is not a text");
        return in_value.get<std::string>();
    }

    [[noreturn]] void Fail(const std::string& in_reason) const {
        FailWith(m_place + " " + in_reason + ".");
    }

    std::string m_place;
    DsnDescription m_description;
};

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
        descriptions.push_back(Reader(in_source, i).Run(list[i]));
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
