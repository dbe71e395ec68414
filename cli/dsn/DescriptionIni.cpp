#include "VeltraneDialog/FieldRules.h"
#include "cli/dsn/DescriptionFormats.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::Trim;

/// @return the fault of the key; null if there is none
const char* SetKey(const std::string& in_key, const std::string& in_value,
                   DsnDescription& io_description) {
    if (std::string* const member = FindMember(in_key, io_description)) {
        *member = in_value;
    } else if (io_description.m_values.Find(in_key) != nullptr) {
        return "a key that occurs twice";
    } else if (!EqualsIgnoringCase(in_key, "PWD") || !in_value.empty()) {
        // An empty PWD is common in odbc.ini files. It does not remove a stored password.
        io_description.m_values.Set(CanonicalKey(in_key), in_value);
    }
    return nullptr;
}

}  // namespace

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
            const char* const reason =
                SetKey(std::string(Trim(line.substr(0, equals))),
                       std::string(Trim(line.substr(equals + 1))), descriptions.back());
            failIf(reason != nullptr, reason);
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
