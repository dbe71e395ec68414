#include "cli/Profile.h"

#include <algorithm>

#include "Setup/OdbcIniText.h"
#include "cli/CommandError.h"
#include "cli/DriverManager.h"
#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

namespace {

constexpr char BLANKS[] = " \t\r\v\f";
/// Sections of odbc.ini that are no DSNs.
constexpr std::string_view OTHER_SECTIONS[] = {"ODBC", "ODBC Data Sources"};

std::string_view Trim(std::string_view in_text) {
    const std::size_t begin = in_text.find_first_not_of(BLANKS);
    return begin == std::string_view::npos
               ? std::string_view()
               : in_text.substr(begin, in_text.find_last_not_of(BLANKS) - begin + 1);
}

std::string Lower(std::string_view in_text) {
    std::string text(in_text);
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

bool IsOther(std::string_view in_name) {
    return std::any_of(std::begin(OTHER_SECTIONS), std::end(OTHER_SECTIONS),
                       [&](std::string_view name) { return IsSameKey(name, in_name); });
}

}  // namespace

Profile::Profile(Scope in_scope) {
    std::string text = ReadProfileFile(in_scope);
    Parse(text);
    Wipe(text);
}

Profile::Profile(const std::string& in_text) {
    if (!ODBC::OdbcIniText(in_text).IsReadable()) {
        throw CommandError(EXIT_USAGE, "There is text before the first section.");
    }
    Parse(in_text);
}

/// Of sections and of keys that stand twice the first one counts; a line is cut where the driver
/// manager cuts it, and what is behind the cut counts as a line of its own.
void Profile::Parse(const std::string& in_text) {
    Values* section = nullptr;
    std::string_view rest(in_text);
    while (!rest.empty()) {
        const std::size_t lineEnd = std::min(rest.find('\n'), rest.size() - 1) + 1;
        const std::size_t size = std::min(lineEnd, ODBC::OdbcIniText::MAX_LINE);
        std::string_view line = rest.substr(0, size);
        rest.remove_prefix(size);
        if (!line.empty() && line.back() == '\n') {
            line.remove_suffix(1);
        }
        line = Trim(line.substr(0, line.find('\0')));
        if (line.empty() || line.front() == '#' || line.front() == ';') {
            continue;
        }
        if (line.front() == '[') {
            const std::string_view name = Trim(line.substr(1, line.find(']') - 1));
            const auto [place, isNew] = m_sections.try_emplace(Lower(name));
            section = isNew ? &place->second : nullptr;
            if (isNew && !IsOther(name)) {
                m_names.emplace_back(name);
            }
            continue;
        }
        const std::size_t equals = line.find('=');
        const std::string_view key = Trim(line.substr(0, equals));
        if (section == nullptr || key.empty() || section->Find(key) != nullptr) {
            continue;
        }
        section->Set(key, equals == std::string_view::npos ? std::string_view()
                                                           : Trim(line.substr(equals + 1)));
    }
}

const Values* Profile::Find(const std::string& in_name) const {
    const auto place = m_sections.find(Lower(in_name));
    return place == m_sections.end() || IsOther(in_name) ? nullptr : &place->second;
}

}  // namespace Veltrane::Cli
