#include "cli/Description.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

#include "cli/CommandError.h"
#include "cli/Profile.h"

namespace Veltrane::Cli {

namespace {

using Json = nlohmann::ordered_json;

[[noreturn]] void Refuse(const std::string& in_where, const std::string& in_why) {
    throw CommandError(EXIT_USAGE, "In the description, " + in_where + ": " + in_why);
}

/// A text member of an entry; the given one when it is absent.
std::string Text(const Json& in_entry, const char* in_key, const std::string& in_where,
                 const std::string& in_default) {
    const auto member = in_entry.find(in_key);
    if (member == in_entry.end()) {
        return in_default;
    }
    if (!member->is_string()) {
        Refuse(in_where, std::string("\"") + in_key + "\" is not a text.");
    }
    return member->get<std::string>();
}

void ReadValues(const Json& in_values, const std::string& in_where, Wish& io_wish) {
    if (!in_values.is_object()) {
        Refuse(in_where, "\"values\" is not an object.");
    }
    for (const auto& [key, value] : in_values.items()) {
        if (IsSameKey(key, "Driver") || IsSameKey(key, "DSN")) {
            Refuse(in_where, key + " is not among the values; use \"driver\" and \"name\".");
        }
        if (value.is_null()) {
            io_wish.m_unset.push_back(key);
        } else if (value.is_string()) {
            io_wish.m_values.Set(key, value.get_ref<const std::string&>());
        } else {
            Refuse(in_where, "the value of " + key + " is not a text.");
        }
    }
}

Described ReadEntry(const Json& in_entry, std::size_t in_number) {
    const std::string number = "entry " + std::to_string(in_number);
    if (!in_entry.is_object()) {
        Refuse(number, "it is not an object.");
    }
    for (const auto& [key, value] : in_entry.items()) {
        if (key != "name" && key != "driver" && key != "state" && key != "values") {
            Refuse(number, "it has the unknown member \"" + key + "\".");
        }
    }
    Described described;
    described.m_wish.m_dsn = Text(in_entry, "name", number, "");
    const std::string where = number + " (\"" + described.m_wish.m_dsn + "\")";
    described.m_wish.m_driver = Text(in_entry, "driver", where, "");
    const std::string state = Text(in_entry, "state", where, "present");
    if (state != "present" && state != "absent") {
        Refuse(where, "the state is neither \"present\" nor \"absent\".");
    }
    described.m_isAbsent = state == "absent";
    if (const auto values = in_entry.find("values"); values != in_entry.end()) {
        ReadValues(*values, where, described.m_wish);
    }
    return described;
}

std::vector<Described> ParseJson(const std::string& in_text) {
    Json json;
    try {
        json = Json::parse(in_text);
    } catch (const Json::parse_error& error) {
        // The parser's own text quotes what it read, which may be a password.
        Refuse("byte " + std::to_string(error.byte), "this is not JSON.");
    }
    const Json& entries = json.is_object() && json.size() == 1 && json.contains("data_sources")
                              ? json["data_sources"]
                              : json;
    if (!entries.is_array()) {
        Refuse("the whole", "there is neither an array nor one named \"data_sources\".");
    }
    std::vector<Described> all;
    all.reserve(entries.size());
    for (const Json& entry : entries) {
        all.push_back(ReadEntry(entry, all.size() + 1));
    }
    return all;
}

std::vector<Described> ParseIni(const std::string& in_text) {
    const Profile profile(in_text);
    std::vector<Described> all;
    all.reserve(profile.Names().size());
    for (const std::string& name : profile.Names()) {
        Described& described = all.emplace_back();
        described.m_wish.m_dsn = name;
        for (const auto& [key, value] : *profile.Find(name)) {
            if (IsSameKey(key, "Driver")) {
                described.m_wish.m_driver = value;
            } else {
                described.m_wish.m_values.Set(key, value);
            }
        }
    }
    return all;
}

/// An array of JSON begins as a section of an INI file does; its first entry tells them apart.
bool LooksLikeJson(const std::string& in_text) {
    constexpr char BLANKS[] = " \t\r\n";
    const std::size_t begin = in_text.find_first_not_of(BLANKS);
    if (begin == std::string::npos || in_text[begin] != '[') {
        return begin != std::string::npos && in_text[begin] == '{';
    }
    const std::size_t next = in_text.find_first_not_of(BLANKS, begin + 1);
    return next == std::string::npos || in_text[next] == '{' || in_text[next] == ']';
}

}  // namespace

std::vector<Described> ParseDescription(const std::string& in_text) {
    std::vector<Described> all = LooksLikeJson(in_text) ? ParseJson(in_text) : ParseIni(in_text);
    const auto isLess = [](const std::string& in_a, const std::string& in_b) {
        return CompareKeys(in_a, in_b) < 0;
    };
    std::set<std::string, decltype(isLess)> names(isLess);
    for (const Described& described : all) {
        if (!names.insert(described.m_wish.m_dsn).second) {
            Refuse("\"" + described.m_wish.m_dsn + "\"", "this name stands twice.");
        }
    }
    return all;
}

std::string ReadDescription(const std::string& in_path) {
    using Bytes = std::istreambuf_iterator<char>;
    if (in_path == "-") {
        return {Bytes(std::cin), Bytes()};
    }
    std::ifstream file(in_path, std::ios::binary);
    std::string text;
    if (file) {
        text.assign(Bytes(file), Bytes());
    }
    if (!file || file.bad()) {
        throw CommandError(EXIT_FAILED, in_path + ": " + std::strerror(errno));
    }
    return text;
}

}  // namespace Veltrane::Cli
