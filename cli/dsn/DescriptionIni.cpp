#include "VeltraneDialog/FieldRules.h"
#include "cli/dsn/Description.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

using Orska::Support::Trim;

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

}  // namespace Veltrane::Cli
