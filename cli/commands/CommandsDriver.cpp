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
std::vector<KeyChange> MissingFrom(const Entries& in_current, const Entries& in_given) {
    std::vector<KeyChange> missing;
    for (const auto& [key, value] : in_given) {
        if (GetLibraryEntry(in_current, key) == value) continue;
        const bool has64 = in_current.Find(key + "64") != nullptr;
        KeyChange& change =
            missing.emplace_back(KeyChange{has64 ? key + "64" : key, {}, value, false});
        if (const auto* const before = in_current.Find(change.m_key)) change.m_before = *before;
    }
    return missing;
}

/// Refuses to remove a driver that another installation has registered.
void CheckSetup(const CommandLine& in_line, const Entries& in_current, const std::string& in_path) {
    if (!in_line.Has("--setup")) return;
    const std::string setup = GetLibraryEntry(in_current, "Setup");
    const std::string given = in_line.Get("--setup");
    std::error_code error;
    if (setup == given || std::filesystem::equivalent(ToPath(setup), ToPath(given), error)) return;
    throw CommandError(EXIT_NOT_FOUND, "The driver " + Quote(GetDriver(in_line)) + " in " +
                                           in_path + " has another setup library" +
                                           (setup.empty() ? "" : ", " + setup) + ".");
}

/// A library can be installed after it is registered, so a missing one is only a warning.
std::vector<std::string> WarnOfMissing(const Entries& in_given) {
    std::vector<std::string> warnings;
    for (const auto& [key, value] : in_given) {
        std::error_code error;
        const bool isThere = std::filesystem::exists(ToPath(value), error);
        if (key == "Description" || isThere || error) continue;
        warnings.push_back("There is no file " + value + ", which is registered as " + key + ".");
    }
    return warnings;
}

/// Carries out the plan, unless in a dry run, and prints it.
ExitCode Change(const CommandLine& in_line, const DriverRegistry& in_registry,
                const DsnPlan& in_plan, const std::vector<std::string>& in_warnings = {}) {
    const bool isChange = in_plan.m_action != Action::None;
    const bool isDryRun = in_line.Has("--dry-run");
    if (isChange && !isDryRun) in_registry.CarryOut(in_plan);
    if (in_line.Has("--json")) {
        Json document{{"driver", in_plan.m_name},
                      {"changed", isChange},
                      {"dry_run", isDryRun},
                      {"difference", Difference(in_plan, true)}};
        if (!in_warnings.empty()) document["warnings"] = in_warnings;
        PrintJson(document);
    } else if (!in_line.Has("--quiet")) {
        std::cout << "Driver ";
        PrintPlan(in_plan, isDryRun, {}, true);
        for (const std::string& warning : in_warnings) PrintError(warning);
    }
    return EXIT_DONE;
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
    std::vector<KeyChange> missing = MissingFrom(current.value_or(Entries()), given);
    if (current && !missing.empty() && !in_line.Has("--replace")) {
        throw CommandError(EXIT_EXISTS, "The driver " + Quote(driver) + " is registered in " +
                                            registry.GetPath() +
                                            " with other values; --replace changes them.");
    }
    const Action change = missing.empty() ? Action::None : Action::Change;
    return Change(in_line, registry,
                  {.m_name = driver,
                   .m_action = current ? change : Action::Add,
                   .m_changes = std::move(missing)},
                  WarnOfMissing(given));
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
    return Change(
        in_line, registry,
        {.m_name = driver, .m_action = Action::Remove, .m_changes = Compare(*current, {})});
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
