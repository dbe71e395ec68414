#include <map>

#include "cli/dsn/DriverRegistry.h"
#include "cli/examine/ApartWork.h"
#include "cli/examine/Findings.h"
#include "cli/line/CommandTable.h"
#include "cli/system/Input.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

const std::vector<std::string> CONNECTING_FUNCTIONS{"SQLAllocHandle", "SQLAllocEnv"};

/// Another driver has its own setup library.
bool IsOurs(const std::string& in_driver) { return EqualsIgnoringCase(in_driver, DEFAULT_DRIVER); }

/// @param in_how  how the driver was named: "with --driver"
Finding NotRegistered(const DriverRegistry& in_registry, const std::string& in_driver,
                      const std::string& in_how) {
    const std::string known = Join(in_registry.GetNames());
    const std::string repair =
        IsOurs(in_driver)
            ? "Register it: veltrane-dsn driver register --driver " + Quote(in_driver) +
                  " --setup " + PLATFORM_WORDS.m_exampleSetup + ", or give the right name " +
                  in_how + "."
            : "Give the name of a registered driver " + in_how + ", or install that driver.";
    return {Severity::Error, "driver-not-registered",
            "The driver " + Quote(in_driver) + " is not registered in " + in_registry.GetPath() +
                (known.empty() ? "." : ". Registered are: " + known + "."),
            repair};
}

/// Returns the command that registers another library for the entry.
std::string HowToRegister(const std::string& in_driver, const std::string& in_entry) {
    return "register its real path: veltrane-dsn driver register --replace " +
           (IsOurs(in_driver) ? std::string() : "--driver " + Quote(in_driver) + " ") +
           (in_entry == "Setup" ? "--setup" : "--library") + " PATH.";
}

/// Returns the finding for a library that cannot be used.
/// @param in_driver  the driver's name; empty if a DSN has the library's path
/// @param in_entry  the key in odbcinst.ini that names it, such as "Setup"
Finding DescribeFault(const LibraryProbe& in_probe, const std::string& in_driver,
                      const std::string& in_entry, const std::string& in_library) {
    const std::string subject = in_entry + "=" + in_library;
    const std::string& detail = in_probe.m_detail;
    const std::map<LibraryFault, Finding> faults{
        {LibraryFault::NotFound,
         {Severity::Error, "library-not-found",
          "The library of " + subject + " cannot be opened: " + detail + ".",
          "Install it there, or " + (in_driver.empty()
                                         ? "give the DSN the path of one that is there."
                                         : HowToRegister(in_driver, in_entry))}},
        {LibraryFault::NotALibrary,
         {Severity::Error, "library-not-a-library",
          subject + " is not a shared library: " + detail + ".",
          "Register the path of the library itself, or install its package again."}},
        {LibraryFault::WrongArchitecture,
         {Severity::Error, "library-wrong-architecture",
          subject + " is a library for another architecture: " + detail + ".",
          "Install the package that is built for this architecture."}},
        {LibraryFault::MissingDependency,
         {Severity::Error, "library-missing-dependency",
          subject + " cannot be loaded: it needs " + detail + ", which is not found.",
          "Install the package that contains " + detail +
              PLATFORM_WORDS.m_missingDependencyRepair}},
        {LibraryFault::MissingSymbol,
         {Severity::Error, "library-missing-symbol",
          subject + " cannot be loaded: no library defines " + detail + ".",
          PLATFORM_WORDS.m_missingSymbolRepair}},
        {LibraryFault::Crashes,
         {Severity::Error, "library-crashes",
          subject + " ends the process that loads it, or takes too long to load.",
          "Install its package again; if that does not help, report it to its maker."}},
        {LibraryFault::NoEntryPoint,
         {Severity::Error, "library-no-entry-point", subject + " exports none of " + detail + ".",
          "Register the driver's setup library as Setup and the driver itself as Driver; the two "
          "are different files."}},
        {LibraryFault::CannotLoad,
         {Severity::Error, "library-cannot-be-loaded",
          subject + " cannot be loaded: " + detail + ".", PLATFORM_WORDS.m_loaderRepair}}};
    return faults.at(in_probe.m_fault);
}

void ExamineLibrary(const std::string& in_driver, const std::string& in_entry,
                    const std::string& in_library, const std::vector<std::string>& in_functions,
                    Findings& io_findings) {
    if (HasFolder(in_library) && !IsAbsolutePath(in_library)) {
        io_findings.push_back({Severity::Warning, "library-path-relative",
                               in_entry + "=" + in_library +
                                   " is a relative path, so it depends on the working directory of "
                                   "each program.",
                               "Register it again with an absolute path."});
    }
    const LibraryProbe probe = ProbeLibrary(in_library, in_functions);
    if (probe.m_fault != LibraryFault::None) {
        io_findings.push_back(DescribeFault(probe, in_driver, in_entry, in_library));
    }
}

/// Examines the entry that programs connect with.
void ExamineDriverEntry(const DriverRegistry& in_registry, const std::string& in_driver,
                        const Entries& in_entries, Findings& io_findings) {
    const std::string driver = GetLibraryEntry(in_entries, "Driver");
    if (!driver.empty()) {
        ExamineLibrary(in_driver, "Driver", driver, CONNECTING_FUNCTIONS, io_findings);
        return;
    }
    const bool isNeeded = PLATFORM_WORDS.m_needsDriverLibrary;
    io_findings.push_back(
        {isNeeded ? Severity::Error : Severity::Warning, "driver-without-library",
         "The driver " + Quote(in_driver) + " has no Driver entry in " + in_registry.GetPath() +
             (isNeeded ? ": the installer adds no DSN, and programs cannot connect."
                       : ": DSNs can be managed, but programs cannot connect."),
         "Install the driver's library, which is not part of these programs, and register it: "
         "veltrane-dsn driver register --replace --driver " +
             Quote(in_driver) + " --library " + PLATFORM_WORDS.m_exampleDriver + "."});
}

Finding ExamineRequest(const std::string& in_driver) {
    const std::string answer = AskApart("driver", in_driver);
    if (answer == "=") {
        return {Severity::Note, "driver-answers",
                "The installer finds the driver " + Quote(in_driver) +
                    ", and its setup library answers requests."};
    }
    return {Severity::Error, "driver-does-not-answer",
            "The setup library of the driver " + Quote(in_driver) +
                " can be loaded, but does not answer a request through the installer: " +
                (answer.empty() ? "it ends the process or takes too long" : answer) + ".",
            "Set TR4CE=9:FILE and run doctor again: the file then shows how far a request gets."};
}

}  // namespace

Findings ExamineDriverLibrary(const std::string& in_driver) {
    Findings findings;
    if (HasFolder(in_driver)) {
        ExamineLibrary({}, "Driver", in_driver, CONNECTING_FUNCTIONS, findings);
        return findings;
    }
    const DriverRegistry registry;
    const std::optional<Entries> entries = registry.Find(in_driver);
    if (!entries) return {NotRegistered(registry, in_driver, "as Driver")};
    ExamineDriverEntry(registry, in_driver, *entries, findings);
    return findings;
}

void ExamineDriver(const std::string& in_driver, Findings& out_findings) {
    const DriverRegistry registry;
    const std::optional<Entries> entries = registry.Find(in_driver);
    if (!entries) {
        return out_findings.push_back(NotRegistered(registry, in_driver, "with --driver"));
    }
    const std::string setup = GetLibraryEntry(*entries, "Setup");
    if (setup.empty()) {
        out_findings.push_back(
            {Severity::Error, "driver-without-setup",
             "The driver " + Quote(in_driver) + " has no Setup entry in " + registry.GetPath() +
                 ".",
             "Add it: veltrane-dsn driver register --replace --driver " + Quote(in_driver) +
                 " --setup " + (IsOurs(in_driver) ? PLATFORM_WORDS.m_exampleSetup : "PATH") + "."});
    } else {
        ExamineLibrary(in_driver, "Setup", setup, {"ConfigDSN", "ConfigDSNW"}, out_findings);
    }
    ExamineDriverEntry(registry, in_driver, *entries, out_findings);
    // Otherwise the request fails for a reason that is reported already.
    if (!HasError(out_findings)) out_findings.push_back(ExamineRequest(in_driver));
}

}  // namespace Veltrane::Cli
