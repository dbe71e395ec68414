#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/DriverRegistry.h"
#include "cli/examine/Findings.h"
#include "cli/system/Input.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// Examines the DSNs of the driver, and those of drivers that are not registered.
void ExamineDsns(const DsnStore& in_store, const ODBC::ProfileView& in_text,
                 const std::string& in_driver, Findings& io_findings) {
    const DriverRegistry registry;
    const std::string where = " of " + in_store.GetPath();
    for (const std::string& dsn : GetDsnNames(in_text)) {
        const std::string driver = in_text.Get(dsn, "Driver").value_or("");
        if (IsSameName(driver, in_driver)) {
            ExamineDsn(in_text, in_store.GetScope(), dsn, in_driver, io_findings);
        } else if (driver.empty()) {
            io_findings.push_back({Severity::Warning, "dsn-without-driver",
                                   "The DSN " + Quote(dsn) + where + " has no Driver entry.",
                                   "Add it again, or remove its section."});
        } else if (!HasFolder(driver) && !registry.Find(driver)) {
            io_findings.push_back({Severity::Warning, "dsn-of-unknown-driver",
                                   "The DSN " + Quote(dsn) + where + " is one of the driver " +
                                       Quote(driver) + ", which is not registered in " +
                                       registry.GetPath() + ".",
                                   "Install and register that driver, or remove the DSN."});
        }
    }
}

Findings Examine(const std::string& in_driver) {
    Findings findings;
    const DsnStore user(Scope::User);
    const DsnStore system(Scope::System);
    // Examinations are independent: an unreadable file must not hide the findings of the others.
    const auto add = [&findings](const auto& in_examine) {
        try {
            in_examine();
        } catch (const std::exception& error) {
            findings.push_back({Severity::Error, "cannot-examine", std::string(error.what()) + ".",
                                "Give yourself the right to read it and run doctor again."});
        }
    };
    const auto examine = [&](const DsnStore& in_store) {
        const std::optional<ODBC::ProfileView> text = ExamineFile(in_store, findings);
        if (text) add([&] { ExamineDsns(in_store, *text, in_driver, findings); });
        return text;
    };
    add([&] { ExamineDriver(in_driver, findings); });
    const std::optional<ODBC::ProfileView> userText = examine(user);
    const std::optional<ODBC::ProfileView> systemText = examine(system);
    if (userText && systemText) ExamineShadows(user, *userText, system, *systemText, findings);
    ExamineEnvironment(findings);
    ExamineDriverManager(findings);
    return findings;
}

std::string Count(std::size_t in_count, const char* in_name) {
    return std::to_string(in_count) + " " + in_name + (in_count == 1 ? "" : "s");
}

void Print(const Findings& in_findings, bool in_areNotesShown) {
    std::size_t counts[3] = {};
    for (const Finding& finding : in_findings) {
        ++counts[static_cast<std::size_t>(finding.m_severity)];
    }
    const auto [errors, warnings, notes] = counts;
    if (errors + warnings == 0 && !in_areNotesShown) {
        std::cout << "Nothing is wrong. --verbose shows " << Count(notes, "note") << ".\n";
        return;
    }
    PrintFindings(in_findings);
    std::cout << Count(errors, "error") << ", " << Count(warnings, "warning") << ", "
              << Count(notes, "note") << "\n";
}

const char* DescribePresence(const std::string& in_path) {
    if (in_path.empty()) return "not registered";
    return IsThere(in_path) || !HasFolder(in_path) ? "" : " (does not exist)";
}

}  // namespace

ExitCode RunDoctor(const CommandLine& in_line) {
    const Findings findings = Examine(GetDriver(in_line));
    if (in_line.Has("--json")) {
        PrintJson({{"sound", !HasError(findings)}, {"findings", ToJson(findings)}});
    } else {
        Print(findings, in_line.Has("--verbose"));
    }
    return HasError(findings) ? EXIT_FAILED : EXIT_DONE;
}

ExitCode ShowPlaces(const CommandLine& in_line) {
    const DriverRegistry registry;
    const Entries driver = registry.Find(GetDriver(in_line)).value_or(Entries());
    const struct {
        const char* m_title;
        const char* m_key;  ///< in JSON
        std::string m_path;
    } places[] = {
        {"DSNs of this user", "user_file", DsnStore(Scope::User).GetPath()},
        {"DSNs of all users", "system_file", DsnStore(Scope::System).GetPath()},
        {"Drivers", "driver_file", registry.GetPath()},
        {"Setup library", "setup_library", GetLibraryEntry(driver, "Setup")},
        {"Driver library", "driver_library", GetLibraryEntry(driver, "Driver")},
        {"Installer library", "installer_library", FindInstallerLibrary()},
    };
    std::string text;
    Json document;
    for (const auto& [title, key, path] : places) {
        text += std::string(title) + ": " + path + DescribePresence(path) + "\n";
        document[key] = path;
    }
    PrintResult(in_line, text, document);
    return EXIT_DONE;
}

}  // namespace Veltrane::Cli
