#include <filesystem>
#include <iostream>

#include "Setup/OdbcIniLine.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/DriverRegistry.h"
#include "cli/system/Input.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

Entries GivenEntries(const CommandLine& in_line) {
    constexpr KeyOption KEYS[] = {
        {"--description", "Description"}, {"--library", "Driver"}, {"--setup", "Setup"}};
    Entries entries;
    for (const auto& [option, key] : KEYS) {
        if (!in_line.Has(option)) continue;
        const std::string value = in_line.Get(option);
        if (option != "--description" && !IsAbsolutePath(value)) {
            Refuse(std::string("The path of ") + key + " " + PLATFORM_WORDS.m_absolutePath +
                   ": programs with other working directories read it.");
        }
        entries.Set(key, value);
    }
    return entries;
}

void CheckName(const std::string& in_driver) {
    if (!DriverRegistry::IsName(in_driver) || !ODBC::OdbcIniLine::IsCarriableSection(in_driver) ||
        !ODBC::OdbcIniLine::IsCarriableLine("Driver", in_driver)) {
        Refuse("This cannot be the name of a driver.");
    }
}

/// Returns the entries to write: "Setup64" instead of "Setup" if the driver has that, which wins.
Entries MissingFrom(const Entries& in_current, const Entries& in_given) {
    Entries missing;
    for (const auto& [key, value] : in_given) {
        if (GetLibraryEntry(in_current, key) == value) continue;
        const bool has64 = in_current.Find(key + "64") != nullptr;
        missing.Set(has64 ? key + "64" : key, value);
    }
    return missing;
}

bool IsSamePath(const std::string& in_left, const std::string& in_right) {
    std::error_code error;
    return in_left == in_right ||
           (std::filesystem::equivalent(ToPath(in_left), ToPath(in_right), error) && !error);
}

/// Refuses to remove a driver that another installation has registered.
void CheckSetup(const CommandLine& in_line, const Entries& in_current, const std::string& in_path) {
    if (!in_line.Has("--setup")) return;
    const std::string setup = GetLibraryEntry(in_current, "Setup");
    if (IsSamePath(setup, in_line.Get("--setup"))) return;
    throw CommandError(EXIT_NOT_FOUND, "The driver " + Quote(GetDriver(in_line)) + " in " +
                                           in_path + " has another setup library" +
                                           (setup.empty() ? "" : ", " + setup) + ".");
}

/// A library can be installed after it is registered, so a missing one is only a warning.
std::vector<std::string> WarnOfMissing(const Entries& in_given) {
    std::vector<std::string> warnings;
    for (const auto& [key, value] : in_given) {
        std::error_code error;
        if (key == "Description" || std::filesystem::exists(ToPath(value), error) || error) {
            continue;
        }
        warnings.push_back("There is no file " + value + ", which is registered as " + key + ".");
    }
    return warnings;
}

void PrintChange(const CommandLine& in_line, Action in_action, const Entries& in_before,
                 const Entries& in_after, const std::vector<std::string>& in_warnings = {}) {
    const bool isDryRun = in_line.Has("--dry-run");
    const DsnPlan plan{.m_name = GetDriver(in_line),
                       .m_action = in_action,
                       .m_changes = Compare(in_before, in_after)};
    if (in_line.Has("--json")) {
        Json document{{"driver", plan.m_name},
                      {"changed", in_action != Action::None},
                      {"dry_run", isDryRun},
                      {"difference", Difference(plan, true)}};
        if (!in_warnings.empty()) document["warnings"] = in_warnings;
        PrintJson(document);
    } else if (!in_line.Has("--quiet")) {
        std::cout << "Driver ";
        PrintPlan(plan, isDryRun, {}, true);
        for (const std::string& warning : in_warnings) PrintError(warning);
    }
}

}  // namespace

ExitCode RegisterDriver(const CommandLine& in_line) {
    const DriverRegistry registry;
    const std::string driver = GetDriver(in_line);
    CheckName(driver);
    const Entries given = GivenEntries(in_line);
    const std::optional<Entries> current = registry.Find(driver);
    if (!current && given.Find("Setup") == nullptr) {
        Refuse("A new driver needs --setup with its setup library.");
    }
    Entries after = current.value_or(Entries());
    const Entries before = after;
    const Entries missing = MissingFrom(before, given);
    if (current && !missing.IsEmpty() && !in_line.Has("--replace")) {
        throw CommandError(EXIT_EXISTS, "The driver " + Quote(driver) + " is registered in " +
                                            registry.GetPath() +
                                            " with other values; --replace changes them.");
    }
    const Action change = missing.IsEmpty() ? Action::None : Action::Change;
    const Action action = current ? change : Action::Add;
    for (const auto& [key, value] : missing) after.Set(key, value);
    if (action != Action::None && !in_line.Has("--dry-run")) {
        registry.Register(driver, missing);
    }
    PrintChange(in_line, action, before, after, WarnOfMissing(given));
    return EXIT_DONE;
}

ExitCode UnregisterDriver(const CommandLine& in_line) {
    const DriverRegistry registry;
    const std::string driver = GetDriver(in_line);
    const std::optional<Entries> current = registry.Find(driver);
    if (!current) {
        throw CommandError(EXIT_NOT_FOUND, "There is no driver " + Quote(driver) + " in " +
                                               registry.GetPath() + ".");
    }
    CheckSetup(in_line, *current, registry.GetPath());
    if (!in_line.Has("--dry-run")) registry.Unregister(driver);
    PrintChange(in_line, Action::Remove, *current, {});
    return EXIT_DONE;
}

ExitCode ListDrivers(const CommandLine& in_line) {
    const DriverRegistry registry;
    Json list = Json::array();
    std::string text;
    for (const std::string& name : registry.GetNames()) {
        const Entries entries = registry.Find(name).value_or(Entries());
        const std::string setup = GetLibraryEntry(entries, "Setup");
        text += name + (setup.empty() ? "" : "  " + setup) + "\n";
        list.push_back({{"name", name},
                        {"description", entries.Get("Description")},
                        {"setup", setup},
                        {"library", GetLibraryEntry(entries, "Driver")}});
    }
    PrintResult(in_line, text, {{"file", registry.GetPath()}, {"drivers", std::move(list)}});
    return EXIT_DONE;
}

}  // namespace Veltrane::Cli
