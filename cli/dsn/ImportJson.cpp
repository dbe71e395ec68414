#include "cli/dsn/Import.h"
#include "cli/dsn/StrictJson.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Json = StrictJson;

/// Reads one object of Get-OdbcDsn.
class Reader {
public:
    Reader(const std::string& in_source, std::size_t in_index, std::vector<std::string>& out_notes)
        : m_place(in_source + ": entry " + std::to_string(in_index + 1)), m_notes(out_notes) {}

    ImportedDsn Run(const Json& in_object) {
        if (!in_object.is_object()) Fail("is not an object");
        m_dsn.m_name = Member(in_object, "Name");
        if (m_dsn.m_name.empty()) Fail("has no \"Name\"");
        m_dsn.m_listed = Member(in_object, "DriverName");
        m_dsn.m_isSystem = EqualsIgnoringCase(Member(in_object, "DsnType"), "System");
        m_dsn.m_is32Bit = EqualsIgnoringCase(Member(in_object, "Platform"), "32-bit");
        for (const char* const name : {"Attribute", "PropertyValue"}) {
            if (in_object.contains(name)) ReadValues(name, in_object[name]);
        }
        return std::move(m_dsn);
    }

private:
    /// Returns a member's text; empty if there is none.
    std::string Member(const Json& in_object, const char* in_name) const {
        const auto found = in_object.find(in_name);
        if (found == in_object.end() || found->is_null()) return {};
        if (!found->is_string()) Fail(std::string("has \"") + in_name + "\", which is not a text");
        return found->get<std::string>();
    }

    /// Reads {"Server": "db"}, ["Server=db"] or [{"Name": "Server", "Value": "db"}].
    void ReadValues(const char* in_name, const Json& in_values) {
        if (in_values.is_string()) {
            Fail(std::string("has \"") + in_name +
                 "\" cut short; write it by ConvertTo-Json -Depth 4");
        }
        if (in_values.is_object()) {
            for (const auto& [key, value] : in_values.items()) Add(key, value);
        }
        if (!in_values.is_array()) return;
        for (const Json& pair : in_values) {
            if (pair.is_object()) {
                const char* const key = pair.contains("Key") ? "Key" : "Name";
                Add(Member(pair, key), pair.contains("Value") ? pair["Value"] : Json());
                continue;
            }
            const std::string text = pair.is_string() ? pair.get<std::string>() : std::string();
            const std::size_t equals = text.find('=');
            if (equals == std::string::npos) {
                Fail(std::string("has \"") + in_name + "\" with a key that has no value");
            }
            Add(text.substr(0, equals), text.substr(equals + 1));
        }
    }

    void Add(const std::string& in_key, const Json& in_value) {
        if (in_value.is_string()) {
            m_dsn.m_values.emplace_back(in_key, in_value.get<std::string>());
        } else if (in_value.is_number_integer()) {
            m_dsn.m_values.emplace_back(in_key, in_value.dump());
        } else if (!in_value.is_null()) {
            m_notes.push_back(Quote(m_dsn.m_name) + ": " + in_key +
                              " is left out: its value is not text.");
        }
    }

    [[noreturn]] void Fail(const std::string& in_reason) const {
        FailWith(m_place + " " + in_reason + ".");
    }

    std::string m_place;
    std::vector<std::string>& m_notes;
    ImportedDsn m_dsn;
};

}  // namespace

ImportedDsns ReadPowerShellJson(std::string_view in_text, const ImportWish& in_wish,
                                std::vector<std::string>& out_notes) {
    const Json document = ParseJsonDocument(in_text, in_wish.m_source);
    // One DSN is an object, several are a list, which some versions put into an object.
    const bool isWrapped = document.is_object() && document.contains("value");
    const Json list = isWrapped             ? document["value"]
                      : document.is_array() ? document
                                            : Json::array({document});
    const bool isDescription = document.contains("data_sources") ||
                               (!list.empty() && list[0].is_object() && list[0].contains("name"));
    if (isDescription) {
        FailWith(in_wish.m_source + " is a description already: apply takes it.");
    }
    ImportedDsns dsns;
    for (std::size_t i = 0; i < list.size(); ++i) {
        dsns.push_back(Reader(in_wish.m_source, i, out_notes).Run(list[i]));
    }
    return dsns;
}

}  // namespace Veltrane::Cli
