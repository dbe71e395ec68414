#include "cli/dsn/Description.h"

#include <set>

#include "VeltraneDialog/FieldRules.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::Trim;
using Orska::Support::TrimLeft;

void CheckKeys(const DsnDescription& in_description, const std::string& in_place) {
    const auto fail = [&](const std::string& in_reason) {
        FailWith(in_place + ": " + in_reason + ".");
    };
    const auto check = [&](const std::string& in_key) {
        if (!WhyNoKey(in_key).empty()) fail("the key " + in_key + " is not a value of a DSN");
    };
    const std::string& state = in_description.m_state;
    if (!state.empty() && state != "present" && !in_description.IsAbsent()) {
        fail("the state is neither present nor absent");
    }
    for (const auto& [key, value] : in_description.m_values) check(key);
    for (const std::string& key : in_description.m_unset) check(key);
    const int sources = (in_description.m_values.Find("PWD") != nullptr ? 1 : 0) +
                        (in_description.m_pwdVariable.empty() ? 0 : 1) +
                        (in_description.m_pwdFile.empty() ? 0 : 1);
    if (sources > 1) fail("the password is given twice");
}

Descriptions ParseIni(std::string_view in_text, const std::string& in_source,
                      std::vector<std::string>& out_notes) {
    Descriptions descriptions;
    bool isPassedOver = false;
    std::size_t number = 0;
    const auto failIf = [&](bool in_isWrong, const char* in_reason) {
        if (in_isWrong) {
            FailWith(in_source + ", line " + std::to_string(number) + ": " + in_reason + ".");
        }
    };
    ForEachLine(in_text, [&](std::string_view in_line) {
        ++number;
        const std::string_view line = Trim(in_line);
        if (line.empty() || line.front() == '#' || line.front() == ';') return;
        if (line.front() == '[') {
            failIf(line.back() != ']', "a section header without its closing bracket");
            const std::string name(Trim(line.substr(1, line.size() - 2)));
            isPassedOver = ODBC::IsReservedName(name);
            if (!isPassedOver) {
                descriptions.emplace_back().m_name = name;
            } else {
                out_notes.push_back(in_source + ": [" + name +
                                    "] is the driver manager's own section and is ignored.");
            }
        } else if (!isPassedOver) {
            const std::size_t equals = line.find('=');
            failIf(equals == std::string_view::npos || equals == 0,
                   "neither a section, a comment nor a key with its value");
            failIf(descriptions.empty(), "a key before the first section");
            const std::string key(Trim(line.substr(0, equals)));
            const std::string value(Trim(line.substr(equals + 1)));
            DsnDescription& description = descriptions.back();
            if (std::string* const member = FindMember(key, description)) {
                *member = value;
                return;
            }
            failIf(description.m_values.Find(key) != nullptr, "a key that occurs twice");
            // An empty PWD is common in odbc.ini files. It does not remove a stored password.
            if (EqualsIgnoringCase(key, "PWD") && value.empty()) return;
            description.m_values.Set(CanonicalKey(key), value);
        }
    });
    return descriptions;
}

std::string FormatIni(const Descriptions& in_descriptions) {
    std::string text;
    for (const DsnDescription& description : in_descriptions) {
        if (!text.empty()) text += "\n";
        text += "[" + description.m_name + "]\nDriver=" + description.m_driver + "\n";
        for (const auto& [key, value] : description.m_values) {
            text.append(key).append("=").append(value).append("\n");
        }
    }
    return text;
}

}  // namespace

DescriptionFormat GuessFormat(std::string_view in_text) {
    const std::string_view text = TrimLeft(in_text);
    if (text.starts_with('{')) return DescriptionFormat::JSON;
    if (!text.starts_with('[')) return DescriptionFormat::INI;
    const std::string_view inner = TrimLeft(text.substr(1));
    const bool isList = inner.starts_with('{') || inner.starts_with(']');
    return isList ? DescriptionFormat::JSON : DescriptionFormat::INI;
}

Descriptions ParseDescriptions(std::string_view in_text, DescriptionFormat in_format,
                               const std::string& in_source, std::vector<std::string>& out_notes) {
    // The program that wrote an empty description has probably failed.
    if (TrimLeft(in_text).empty()) FailWith(in_source + " is empty: it describes no DSN.");
    Descriptions descriptions = in_format == DescriptionFormat::JSON
                                    ? ParseJson(in_text, in_source)
                                    : ParseIni(in_text, in_source, out_notes);
    if (descriptions.empty()) out_notes.push_back(in_source + " describes no DSN.");
    std::set<std::string> names;
    for (const DsnDescription& description : descriptions) {
        const std::string place = in_source + ": " + Quote(description.m_name);
        if (!names.insert(FoldName(description.m_name)).second) {
            FailWith(place + " is described twice.");
        }
        CheckKeys(description, place);
        for (const auto& [key, value] : description.m_values) {
            const std::string note = DescribeNearKey(key);
            if (!note.empty()) out_notes.emplace_back(place).append(": ").append(note);
        }
    }
    return descriptions;
}

std::string FormatDescriptions(const Descriptions& in_descriptions, DescriptionFormat in_format) {
    return in_format == DescriptionFormat::JSON ? FormatJson(in_descriptions)
                                                : FormatIni(in_descriptions);
}

std::string* FindMember(std::string_view in_name, DsnDescription& io_description) {
    constexpr std::pair<std::string_view, std::string DsnDescription::*> MEMBERS[] = {
        {"driver", &DsnDescription::m_driver},
        {"state", &DsnDescription::m_state},
        {"pwd_env", &DsnDescription::m_pwdVariable},
        {"pwd_file", &DsnDescription::m_pwdFile}};
    for (const auto& [name, member] : MEMBERS) {
        if (EqualsIgnoringCase(name, in_name)) return &(io_description.*member);
    }
    return nullptr;
}

}  // namespace Veltrane::Cli
