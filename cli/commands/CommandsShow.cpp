#include <algorithm>
#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/examine/Findings.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// A DSN with its section.
struct StoredDsn {
    std::string m_name;
    Entries m_entries;
};

/// Returns the named DSNs, or all of the driver if none is named.
std::vector<StoredDsn> Select(const ODBC::ProfileView& in_view, const DsnStore& in_store,
                              const CommandLine& in_line) {
    std::vector<StoredDsn> selected;
    for (const std::string& name : in_line.m_arguments) {
        const std::optional<Entries> entries = ReadDsn(in_view, name);
        if (!entries) throw NoSuchDsn(in_store, name);
        selected.push_back({name, *entries});
    }
    if (!in_line.m_arguments.empty()) return selected;
    const std::string driver = GetDriver(in_line);
    const std::string prefix = FoldName(in_line.Get("--prefix"));
    for (const std::string& name : GetDsnNames(in_view)) {
        // Filter first: completion asks for few of many.
        if (!FoldName(name).starts_with(prefix)) continue;
        Entries entries(in_view.GetKeyValues(name));
        const bool isOurs = IsSameName(entries.Get("Driver"), driver);
        if (isOurs || in_line.Has("--all")) selected.push_back({name, std::move(entries)});
    }
    return selected;
}

DsnDescription Describe(const StoredDsn& in_dsn, bool in_areSecretsShown,
                        std::vector<std::string>& io_leftOut) {
    DsnDescription description;
    description.m_name = in_dsn.m_name;
    for (const auto& [key, value] : in_dsn.m_entries) {
        if (EqualsIgnoringCase(key, "Driver")) {
            description.m_driver = value;
        } else if (IsSecretKey(key) && !in_areSecretsShown) {
            // Applying the export would store a mask as the password.
            io_leftOut.push_back(key + " of " + in_dsn.m_name);
        } else if (!EqualsIgnoringCase(key, "PWD") || !value.empty()) {
            description.m_values.Set(CanonicalKey(key), value);
        }
    }
    return description;
}

/// Returns columns, each as wide as its longest text in code points.
std::string MakeTable(const Json& in_dsns) {
    std::vector<std::vector<std::string>> rows{{"NAME", "SCOPE", "SERVER", "DATABASE", ""}};
    for (const Json& dsn : in_dsns) {
        auto& row = rows.emplace_back();
        for (const char* const key : {"name", "scope", "server", "database", "relation"}) {
            row.push_back(dsn.value(key, ""));
        }
    }
    const auto width = [](const std::string& in_text) {
        return static_cast<std::size_t>(std::count_if(
            in_text.begin(), in_text.end(), [](char in_byte) { return (in_byte & 0xC0) != 0x80; }));
    };
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width(row[i]));
    }
    std::string text;
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += row[i] + std::string(widths[i] - width(row[i]) + 2, ' ');
        }
        text.erase(text.find_last_not_of(' ') + 1).append("\n");
    }
    return text;
}

}  // namespace

ExitCode ShowDsn(const CommandLine& in_line) {
    const DsnStore store(GetScope(in_line));
    const std::string& dsn = in_line.m_arguments.front();
    const std::optional<Entries> entries = ReadDsn(store.Read(), dsn);
    if (!entries) throw NoSuchDsn(store, dsn);
    const bool areSecretsShown = in_line.Has("--show-secrets");
    std::string text = "DSN=" + dsn + "\n";
    Json::object_t values;
    Json masked = Json::array();
    for (const Entry& entry : *entries) {
        const auto& [key, stored] = entry;
        const std::string value = ShownValue(entry, areSecretsShown);
        text.append(key).append("=").append(value).append("\n");
        if (EqualsIgnoringCase(key, "Driver")) continue;
        values.emplace_back(CanonicalKey(key), value);
        if (!areSecretsShown && IsSecretKey(key)) masked.push_back(key);
    }
    PrintResult(in_line, text,
                {{"name", dsn},
                 {"scope", GetScopeName(store.GetScope())},
                 {"driver", entries->Get("Driver")},
                 {"values", std::move(values)},
                 {"masked", std::move(masked)}});
    return EXIT_DONE;
}

ExitCode ListDsns(const CommandLine& in_line) {
    const bool areBoth = in_line.Has("--both");
    if (areBoth && (in_line.Has("--user") || in_line.Has("--system"))) {
        Refuse("--both excludes --user and --system.");
    }
    const bool isLong = areBoth || in_line.Has("--long");
    Json list = Json::array();
    std::string text;
    for (const Scope scope : {Scope::User, Scope::System}) {
        if (!areBoth && scope != GetScope(in_line)) continue;
        const bool isUser = scope == Scope::User;
        const DsnStore store(scope);
        const DsnStore other(isUser ? Scope::System : Scope::User);
        std::optional<ODBC::ProfileView> others;
        if (areBoth && store.GetPath() != other.GetPath()) others = other.Read();
        for (const StoredDsn& dsn : Select(store.Read(), store, in_line)) {
            // A user's DSN hides the system's.
            const bool isOther = others && others->HasSection(dsn.m_name);
            text.append(dsn.m_name).append("\n");
            Json& entry = list.emplace_back(
                Json{{"name", dsn.m_name}, {"driver", dsn.m_entries.Get("Driver")}});
            if (!isLong) continue;
            entry["scope"] = GetScopeName(scope);
            entry["server"] = dsn.m_entries.Get("Server");
            entry["database"] = dsn.m_entries.Get("Database");
            if (areBoth) entry["relation"] = isOther ? (isUser ? "hides" : "hidden") : "";
        }
    }
    if (isLong) text = MakeTable(list);
    PrintResult(
        in_line, text,
        {{"scope", areBoth ? "both" : GetScopeName(GetScope(in_line))}, {"dsns", std::move(list)}});
    return EXIT_DONE;
}

ExitCode ExportDsns(const CommandLine& in_line) {
    const DescriptionFormat format = GetFormat(in_line, DescriptionFormat::JSON);
    if (format == DescriptionFormat::INI && in_line.Has("--json")) {
        Refuse("--json and --format ini exclude each other.");
    }
    const DsnStore store(GetScope(in_line));
    std::vector<DsnDescription> descriptions;
    std::vector<std::string> secrets;
    std::vector<std::string> others;
    const ODBC::ProfileView view = store.Read();
    for (const StoredDsn& dsn : Select(view, store, in_line)) {
        descriptions.push_back(Describe(dsn, in_line.Has("--show-secrets"), secrets));
        for (const std::string& key : view.GetOtherKeys(dsn.m_name)) {
            others.push_back(key + " of " + dsn.m_name);
        }
    }
    std::cout << FormatDescriptions(descriptions, format);
    if (!secrets.empty()) {
        PrintError("Passwords are left out; --show-secrets writes them: " + JoinFirst(secrets) +
                   ".");
    }
    if (!others.empty()) {
        PrintError("Values that are not text are left out: " + JoinFirst(others) + ".");
    }
    return EXIT_DONE;
}

ExitCode CheckDsns(const CommandLine& in_line) {
    const DsnStore store(GetScope(in_line));
    const ODBC::ProfileView text = store.Read();
    Json results = Json::array();
    bool isSound = true;
    for (const StoredDsn& dsn : Select(text, store, in_line)) {
        Findings findings;
        ExamineDsn(text, store.GetScope(), dsn.m_name, GetDriver(in_line), findings);
        isSound = isSound && !HasError(findings);
        if (in_line.Has("--json")) {
            results.push_back({{"name", dsn.m_name},
                               {"sound", !HasError(findings)},
                               {"findings", ToJson(findings)}});
        } else if (!in_line.Has("--quiet") || HasError(findings)) {
            std::cout << dsn.m_name << (findings.empty() ? ": sound\n" : ":\n");
            PrintFindings(findings);
        }
    }
    if (in_line.Has("--json")) {
        PrintJson({{"scope", GetScopeName(store.GetScope())},
                   {"sound", isSound},
                   {"dsns", std::move(results)}});
    }
    return isSound ? EXIT_DONE : EXIT_FAILED;
}

}  // namespace Veltrane::Cli
