#include "cli/dsn/Description.h"

#include <set>

#include "cli/dsn/DsnPlan.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

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
