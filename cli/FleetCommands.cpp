#include "cli/FleetCommands.h"

#include <iostream>
#include <map>

#include "cli/Description.h"
#include "cli/Faults.h"
#include "cli/Profile.h"
#include "cli/Terminal.h"

namespace Veltrane::Cli {

namespace {

/// Between two lines of progress.
constexpr std::size_t PROGRESS_STEP = 20;

/// The report on an apply as it goes.
class Report {
public:
    Report(const OutputOptions& in_options, std::size_t in_total)
        : m_options(in_options), m_total(in_total), m_hasProgress(IsTerminal(Stream::Error)) {}

    void Add(const Change& in_change) {
        Count(in_change.ResultName());
        if (m_options.m_isJson) {
            m_entries.push_back(ChangeToJson(m_options, in_change));
        } else {
            PrintChange(m_options, in_change);
        }
    }

    void AddFailure(const std::string& in_dsn, const std::string& in_text) {
        Count("failed");
        m_entries.push_back({{"name", in_dsn}, {"result", "failed"}, {"error", in_text}});
        std::cerr << in_dsn << ": failed: " << in_text << "\n";
    }

    void AddUnchanged(const std::string& in_dsn) { Add({in_dsn, {}, true, false, {}, {}}); }

    /// @throws CommandError (failed) when a DSN failed
    void Finish() {
        if (m_options.m_isJson) {
            const bool isChanged = m_counts["added"] + m_counts["changed"] + m_counts["removed"];
            PrintJson({{"changed", isChanged},
                       {"dry_run", m_options.m_isDryRun},
                       {"counts", m_counts},
                       {"data_sources", m_entries}});
        } else if (!m_options.m_isQuiet) {
            const char* separator = "";
            for (const auto& [name, count] : m_counts) {
                std::cout << separator << name << " " << count;
                separator = ", ";
            }
            std::cout << "\n";
        }
        if (m_counts["failed"] != 0) {
            throw CommandError(EXIT_FAILED, std::to_string(m_counts["failed"]) + " of " +
                                                std::to_string(m_total) + " DSNs failed.");
        }
    }

private:
    void Count(const char* in_result) {
        ++m_counts[in_result];
        ++m_done;
        if (m_hasProgress && (m_done % PROGRESS_STEP == 0 || m_done == m_total)) {
            std::cerr << "\r" << m_done << " of " << m_total << (m_done == m_total ? "\n" : "")
                      << std::flush;
        }
    }

    OutputOptions m_options;
    std::size_t m_total;
    bool m_hasProgress;
    std::size_t m_done = 0;
    std::map<std::string, std::size_t> m_counts{
        {"added", 0}, {"changed", 0}, {"failed", 0}, {"removed", 0}, {"unchanged", 0}};
    Json m_entries = Json::array();
};

/// Nothing when the DSN is not there and is not to be there.
void ApplyOne(const Options& in_options, const Profile& in_profile, const Described& in_described,
              Report& io_report) {
    const Values* const section = in_profile.Find(in_described.m_wish.m_dsn);
    if (in_described.m_isAbsent && section == nullptr) {
        io_report.AddUnchanged(in_described.m_wish.m_dsn);
        return;
    }
    Wish wish = in_described.m_wish;
    if (wish.m_driver.empty() && section == nullptr) {
        wish.m_driver = DEFAULT_DRIVER;
    }
    wish.m_isWhole = in_options.m_isReplace;
    if (wish.m_isWhole && wish.m_driver.empty() && section->Find("Driver") != nullptr) {
        wish.m_driver = *section->Find("Driver");
    }
    const Change change =
        in_described.m_isAbsent ? PlanRemoval(wish, *section) : PlanChange(wish, section);
    if (!in_options.m_output.m_isDryRun) {
        Execute(DriverManager(in_options.m_scope), change);
    }
    io_report.Add(change);
}

bool IsOfDriver(const Values& in_section, const std::string& in_driver) {
    const std::string* const stored = in_section.Find("Driver");
    return stored != nullptr && IsSameKey(*stored, in_driver.empty() ? DEFAULT_DRIVER : in_driver);
}

Json DescribeDsn(const Options& in_options, const std::string& in_name, const Values& in_section) {
    Json values = Json::object();
    for (const auto& [key, value] : in_section) {
        const bool isShown = !IsSecret(key) || in_options.m_output.m_hasSecrets;
        if (isShown && !IsSameKey(key, "Driver")) {
            values[key] = value;
        }
    }
    return {{"name", in_name}, {"driver", *in_section.Find("Driver")}, {"values", values}};
}

}  // namespace

void ApplyDescription(const Options& in_options) {
    std::string text = ReadDescription(in_options.m_file);
    const std::vector<Described> all = ParseDescription(text);
    Wipe(text);
    const Profile profile(in_options.m_scope);
    Report report(in_options.m_output, all.size());
    for (const Described& described : all) {
        try {
            ApplyOne(in_options, profile, described, report);
        } catch (const std::exception& error) {
            report.AddFailure(described.m_wish.m_dsn, error.what());
        }
    }
    report.Finish();
}

void ExportDsns(const Options& in_options) {
    const Profile profile(in_options.m_scope);
    Json entries = Json::array();
    for (const std::string& name : profile.Names()) {
        const Values& section = *profile.Find(name);
        if (IsOfDriver(section, in_options.m_driver)) {
            entries.push_back(DescribeDsn(in_options, name, section));
        }
    }
    std::cout << Json{{"data_sources", entries}}.dump(2, ' ', false, Json::error_handler_t::replace)
              << "\n";
}

void CheckDsns(const Options& in_options) {
    const Profile profile(in_options.m_scope);
    Json entries = Json::array();
    bool isFound = false;
    bool hasFault = false;
    for (const std::string& name : profile.Names()) {
        const Values& section = *profile.Find(name);
        const bool isMeant = in_options.m_dsn.empty() ? IsOfDriver(section, in_options.m_driver)
                                                      : IsSameKey(name, in_options.m_dsn);
        if (!isMeant) {
            continue;
        }
        isFound = true;
        const std::vector<std::string> faults = FindFaults(name, section);
        hasFault = hasFault || !faults.empty();
        entries.push_back({{"name", name}, {"faults", faults}});
        for (const std::string& fault : faults) {
            if (!in_options.m_output.m_isJson) {
                std::cout << name << ": " << fault << "\n";
            }
        }
    }
    if (!in_options.m_dsn.empty() && !isFound) {
        throw CommandError(EXIT_NOT_FOUND, "There is no DSN \"" + in_options.m_dsn + "\".");
    }
    if (in_options.m_output.m_isJson) {
        PrintJson({{"data_sources", entries}});
    }
    if (hasFault) {
        throw CommandError(EXIT_FAILED, "There are faults.");
    }
}

}  // namespace Veltrane::Cli
