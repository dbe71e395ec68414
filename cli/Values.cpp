#include "cli/Values.h"

#include <algorithm>

#include "cli/CommandError.h"

namespace Veltrane::Cli {

namespace {

constexpr std::string_view KNOWN_KEYS[] = {"Driver", "Server", "Namespace", "LoginMode",
                                           "UID",    "PWD",    "Database"};
constexpr std::string_view SECRET_KEYS[] = {"PWD", "Password"};

char Lower(char in_char) {
    return in_char >= 'A' && in_char <= 'Z' ? static_cast<char>(in_char - 'A' + 'a') : in_char;
}

std::string_view Trim(std::string_view in_text) {
    constexpr char BLANKS[] = " \t";
    const std::size_t begin = in_text.find_first_not_of(BLANKS);
    return begin == std::string_view::npos
               ? std::string_view()
               : in_text.substr(begin, in_text.find_last_not_of(BLANKS) - begin + 1);
}

/// Takes a value in braces, the opening one being gone, from the front of a text.
std::string TakeBraced(std::string_view& io_text, const std::string& in_key) {
    std::string value;
    for (std::size_t i = 0; i < io_text.size(); ++i) {
        if (io_text[i] != '}') {
            value += io_text[i];
        } else if (i + 1 < io_text.size() && io_text[i + 1] == '}') {
            value += io_text[i++];
        } else {
            io_text = Trim(io_text.substr(i + 1));
            if (!io_text.empty() && io_text.front() != ';') {
                throw CommandError(EXIT_USAGE,
                                   "In the connection string, text follows the brace "
                                   "that ends the value of " +
                                       in_key + ".");
            }
            return value;
        }
    }
    throw CommandError(EXIT_USAGE,
                       "In the connection string, the value of " + in_key + " lacks its \"}\".");
}

}  // namespace

bool IsSameKey(std::string_view in_a, std::string_view in_b) {
    return std::equal(in_a.begin(), in_a.end(), in_b.begin(), in_b.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

int CompareKeys(std::string_view in_a, std::string_view in_b) {
    const std::size_t common = std::min(in_a.size(), in_b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (Lower(in_a[i]) != Lower(in_b[i])) {
            return Lower(in_a[i]) < Lower(in_b[i]) ? -1 : 1;
        }
    }
    return in_a.size() == in_b.size() ? 0 : in_a.size() < in_b.size() ? -1 : 1;
}

bool IsSecret(std::string_view in_key) {
    return std::any_of(std::begin(SECRET_KEYS), std::end(SECRET_KEYS),
                       [&](std::string_view key) { return IsSameKey(key, in_key); });
}

bool IsKnown(std::string_view in_key) {
    return std::any_of(std::begin(KNOWN_KEYS), std::end(KNOWN_KEYS),
                       [&](std::string_view key) { return IsSameKey(key, in_key); });
}

Values::~Values() {
    for (auto& [key, value] : m_items) {
        if (IsSecret(key)) {
            Wipe(value);
        }
    }
}

const std::string* Values::Find(std::string_view in_key) const {
    for (const auto& [key, value] : m_items) {
        if (IsSameKey(key, in_key)) {
            return &value;
        }
    }
    return nullptr;
}

void Values::Set(std::string_view in_key, std::string_view in_value) {
    Remove(in_key);
    std::string_view name = in_key;
    for (const std::string_view known : KNOWN_KEYS) {
        if (IsSameKey(known, in_key)) {
            name = known;
        }
    }
    m_items.emplace_back(name, in_value);
}

void Values::Remove(std::string_view in_key) {
    for (auto item = m_items.begin(); item != m_items.end(); ++item) {
        if (IsSameKey(item->first, in_key)) {
            if (IsSecret(item->first)) {
                Wipe(item->second);
            }
            m_items.erase(item);
            return;
        }
    }
}

Values::Item ParseAssignment(const std::string& in_text) {
    const std::size_t equals = in_text.find('=');
    if (equals == 0 || equals == std::string::npos) {
        throw CommandError(EXIT_USAGE, "A value is given as KEY=VALUE.");
    }
    return {in_text.substr(0, equals), in_text.substr(equals + 1)};
}

Values ParseConnectionString(std::string_view in_text) {
    Values values;
    std::string_view rest = Trim(in_text);
    while (!rest.empty()) {
        if (rest.front() == ';') {
            rest = Trim(rest.substr(1));
            continue;
        }
        const std::size_t equals = rest.find('=');
        const std::string key(Trim(rest.substr(0, equals)));
        if (equals == std::string_view::npos || key.empty()) {
            throw CommandError(EXIT_USAGE, "In the connection string, a pair is not KEY=VALUE.");
        }
        rest = Trim(rest.substr(equals + 1));
        if (!rest.empty() && rest.front() == '{') {
            rest.remove_prefix(1);
            values.Set(key, TakeBraced(rest, key));
        } else {
            const std::size_t end = std::min(rest.find(';'), rest.size());
            values.Set(key, Trim(rest.substr(0, end)));
            rest = rest.substr(end);
        }
    }
    return values;
}

}  // namespace Veltrane::Cli
