#include "cli/Doctor.h"

#include <algorithm>
#include <iostream>
#include <optional>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniText.h"
#include "cli/Drivers.h"
#include "cli/Faults.h"
#include "cli/LibraryCheck.h"
#include "cli/Profile.h"
#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

namespace {

using Findings = std::vector<std::string>;

void ExamineDriver(const std::string& in_driver, Findings& io_findings) {
    if (!IsDriverRegistered(in_driver)) {
        io_findings.push_back("The driver \"" + in_driver + "\" is not registered in " +
                              DriversFile() +
                              ". Register it: veltrane-dsn driver register --setup PATH.");
        return;
    }
    const std::string setup = SetupLibraryOf(in_driver);
    if (setup.empty()) {
        io_findings.push_back("The driver \"" + in_driver + "\" has no setup library in " +
                              DriversFile() +
                              ". Name it: veltrane-dsn driver register --replace --setup PATH.");
    } else if (const std::string fault = FindLibraryFault(setup, "ConfigDSN"); !fault.empty()) {
        io_findings.push_back("Setup library: " + fault);
    }
    for (const char* key : {"Driver64", "Driver"}) {
        const std::string library = ReadDriverValue(in_driver, key);
        const std::string fault = library.empty() ? library : FindLibraryFault(library, nullptr);
        if (!fault.empty()) {
            io_findings.push_back("Driver library: " + fault);
        }
    }
}

bool HasPassword(const Profile& in_profile) {
    for (const std::string& name : in_profile.Names()) {
        for (const auto& [key, value] : *in_profile.Find(name)) {
            if (IsSecret(key) && !value.empty()) {
                return true;
            }
        }
    }
    return false;
}

void ExamineLines(Scope in_scope, Findings& io_findings) {
    const std::string path = ProfilePath(in_scope);
    std::string text = ReadProfileFile(in_scope);
    std::size_t number = 1;
    for (std::size_t begin = 0; begin < text.size(); ++number) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        if (end - begin > ODBC::OdbcIniText::MAX_LINE) {
            io_findings.push_back(path + ", line " + std::to_string(number) +
                                  ": it is longer than 999 bytes, and the driver manager cuts " +
                                  "it. Shorten its value.");
        }
        begin = end + 1;
    }
    Wipe(text);
}

/// Nothing when the file cannot be read.
std::optional<Profile> ExamineFile(Scope in_scope, bool in_isWritten, Findings& io_findings) {
    const std::string path = ProfilePath(in_scope);
    const std::string problem = in_isWritten ? DescribeUnwritable(path) : std::string();
    if (!problem.empty()) {
        io_findings.push_back(problem + ". Give yourself the right to write there.");
    }
    try {
        std::optional<Profile> profile(std::in_place, in_scope);
        ExamineLines(in_scope, io_findings);
        if (HasPassword(*profile) && IsReadableByOthers(path)) {
            io_findings.push_back(path + ": it holds a password, and other users may read it. " +
                                  "Run: chmod go-rwx " + path);
        }
        return profile;
    } catch (const InstallerError& error) {
        if (problem.empty()) {
            io_findings.push_back(std::string(error.what()) + ". Repair the file.");
        }
        return std::nullopt;
    }
}

void ExamineDsns(const Profile& in_profile, const std::string& in_driver, Findings& io_findings) {
    for (const std::string& name : in_profile.Names()) {
        const std::string* const driver = in_profile.Find(name)->Find("Driver");
        if (driver == nullptr || !IsSameKey(*driver, in_driver)) {
            continue;
        }
        for (const std::string& fault : FindFaults(name, *in_profile.Find(name))) {
            io_findings.push_back("DSN " + name + ": " + fault);
        }
    }
}

/// What is known about the driver manager, which tells no version of its own.
std::string DescribeDriverManager() {
    const ODBC::InstallerLibrary& library = ODBC::GetInstallerLibrary();
    const std::string common =
        " Its own writes of odbc.ini take no lock: do not let other tools write at the same time.";
    if (library.m_readWithoutLock != nullptr) {
        return "unixODBC 2.3.13 or later. Setup libraries of other drivers that read profiles may "
               "hang in it." +
               common;
    }
    if (library.m_clearCache != nullptr) {
        return "unixODBC 2.3.12. Programs see changes of odbc.ini up to 20 s late." + common;
    }
    return "unixODBC 2.3.11 or earlier. Programs see changes of odbc.ini up to 20 s late." + common;
}

}  // namespace

void Examine(const Options& in_options) {
    const std::string driver = in_options.m_driver.empty() ? DEFAULT_DRIVER : in_options.m_driver;
    Findings findings;
    ExamineDriver(driver, findings);
    const bool isSystem = in_options.m_scope == Scope::System;
    const std::optional<Profile> user = ExamineFile(Scope::User, !isSystem, findings);
    const std::optional<Profile> system = ExamineFile(Scope::System, isSystem, findings);
    for (const std::optional<Profile>* profile : {&user, &system}) {
        if (*profile) {
            ExamineDsns(**profile, driver, findings);
        }
    }
    if (user && system) {
        for (const std::string& name : user->Names()) {
            if (system->Find(name) != nullptr) {
                findings.push_back("DSN " + name + ": the user's one hides the system's one. " +
                                   "Remove one: veltrane-dsn remove " + name + ".");
            }
        }
    }
    if (in_options.m_output.m_isJson) {
        PrintJson({{"findings", findings}, {"driver_manager", DescribeDriverManager()}});
    } else {
        for (const std::string& finding : findings) {
            std::cout << finding << "\n";
        }
        std::cout << "Driver manager: " << DescribeDriverManager() << "\n";
    }
    if (!findings.empty()) {
        throw CommandError(EXIT_FAILED, "Findings: " + std::to_string(findings.size()) + ".");
    }
}

}  // namespace Veltrane::Cli
