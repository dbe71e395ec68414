#include "VeltraneDialog/FieldRules.h"
#include "cli/dsn/DescriptionFormats.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::Trim;

class Reader {
public:
    Reader(const std::string& in_source, std::vector<std::string>& out_notes)
        : m_source(in_source), m_notes(out_notes) {}

    Descriptions Run(std::string_view in_text) {
        ForEachLine(in_text, [this](std::string_view in_line) {
            ++m_line;
            ReadLine(Trim(in_line));
        });
        return std::move(m_descriptions);
    }

private:
    void ReadLine(std::string_view in_line) {
        if (in_line.empty() || in_line.front() == '#' || in_line.front() == ';') return;
        if (in_line.front() == '[') {
            if (in_line.back() != ']') Fail("a section header without its closing bracket");
            StartSection(std::string(Trim(in_line.substr(1, in_line.size() - 2))));
            return;
        }
        if (m_isPassedOver) return;
        const std::size_t equals = in_line.find('=');
        if (equals == std::string_view::npos || equals == 0) {
            Fail("neither a section, a comment nor a key with its value");
        }
        if (m_descriptions.empty()) Fail("a key before the first section");
        ReadKey(std::string(Trim(in_line.substr(0, equals))),
                std::string(Trim(in_line.substr(equals + 1))));
    }

    void StartSection(const std::string& in_name) {
        m_isPassedOver = ODBC::IsReservedName(in_name);
        if (!m_isPassedOver) {
            m_descriptions.emplace_back().m_name = in_name;
        } else {
            m_notes.push_back(m_source + ": [" + in_name +
                              "] is the driver manager's own section and is passed over.");
        }
    }

    void ReadKey(const std::string& in_key, const std::string& in_value) {
        DsnDescription& description = m_descriptions.back();
        if (std::string* const member = FindMember(in_key, description)) {
            *member = in_value;
        } else if (description.m_values.Find(in_key) != nullptr) {
            Fail("a key that occurs twice");
        } else if (EqualsIgnoringCase(in_key, "PWD") && in_value.empty()) {
            // Common in odbc.ini files. It does not remove a stored password.
        } else {
            description.m_values.Set(CanonicalKey(in_key), in_value);
        }
    }

    [[noreturn]] void Fail(const char* in_reason) const {
        FailWith(m_source + ", line " + std::to_string(m_line) + ": " + in_reason + ".");
    }

    const std::string& m_source;
    std::vector<std::string>& m_notes;
    bool m_isPassedOver = false;
    Descriptions m_descriptions;
    std::size_t m_line = 0;
};

}  // namespace

Descriptions ParseIni(std::string_view in_text, const std::string& in_source,
                      std::vector<std::string>& out_notes) {
    return Reader(in_source, out_notes).Run(in_text);
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
