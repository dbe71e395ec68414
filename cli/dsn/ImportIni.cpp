#include <unordered_set>

#include "Setup/OdbcIniText.h"
#include "cli/dsn/Import.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// Reads a file DSN. Its values are quoted as in a connection string.
ImportedDsn ReadFileDsn(const Entries& in_values, const ImportWish& in_wish) {
    if (in_values.Find("Driver") == nullptr) {
        FailWith(in_wish.m_source + " only names a DSN of its machine; import that one.");
    }
    if (in_wish.m_name.empty()) {
        Refuse("A file DSN contains no name: give --name.");
    }
    ImportedDsn dsn;
    dsn.m_name = in_wish.m_name;
    for (const auto& [key, value] : in_values) {
        dsn.m_values.emplace_back(key, WithoutBraces(value));
    }
    return dsn;
}

/// Notes lines that the driver manager probably reads differently than intended.
void NoteOddLines(std::string_view in_text, const std::string& in_source,
                  std::vector<std::string>& out_notes) {
    std::size_t number = 0;
    ForEachLine(in_text, [&](std::string_view in_line) {
        ++number;
        const std::string_view line = Orska::Support::Trim(in_line);
        if (line.empty() || ODBC::OdbcIniLine::IsComment(line.front())) return;
        const char wanted = line.front() == '[' ? ']' : '=';
        if (line.find(wanted) != std::string_view::npos) return;
        out_notes.push_back(in_source + ", line " + std::to_string(number) + " has no \"" + wanted +
                            "\"; it is read as " +
                            (wanted == ']' ? "a section." : "a key without a value."));
    });
}

}  // namespace

ImportedDsns ReadForeignIni(const std::string& in_text, const ImportWish& in_wish,
                            std::vector<std::string>& out_notes) {
    const ODBC::OdbcIniText ini(in_text);
    if (!ini.IsReadable()) {
        FailWith(in_wish.m_source +
                 " is no odbc.ini, file DSN, export of the registry or "
                 "JSON of Get-OdbcDsn.");
    }
    NoteOddLines(in_text, in_wish.m_source, out_notes);
    // In an odbc.ini, [ODBC] has options of the driver manager.
    const Entries own(ini.GetKeyValues("ODBC"));
    if (own.Find("Driver") != nullptr || own.Find("DSN") != nullptr) {
        return {ReadFileDsn(own, in_wish)};
    }
    ImportedDsns dsns;
    std::unordered_set<std::string> known;
    for (const std::string& name : ini.GetSections()) {
        if (EqualsIgnoringCase(name, "ODBC")) continue;
        if (!known.insert(FoldCase(name)).second) {
            out_notes.push_back("[" + name + "] is left out: there is one of this name before it.");
            continue;
        }
        ImportedDsn& dsn = dsns.emplace_back();
        dsn.m_name = name;
        dsn.m_values = ini.GetKeyValues(name);
        if (ini.HasLongLine(name)) {
            out_notes.push_back(Quote(name) +
                                " has a line that is cut: it is too long for the "
                                "driver manager.");
        }
    }
    if (dsns.empty() && !own.IsEmpty()) {
        FailWith(in_wish.m_source + " has no DSN: its section [ODBC] names no driver.");
    }
    TakeList(dsns, out_notes);
    return dsns;
}

}  // namespace Veltrane::Cli
