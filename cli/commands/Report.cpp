#include "cli/commands/Report.h"

#include <algorithm>
#include <iostream>

#include "PlatformAbstraction/base/Environment.h"
#include "cli/system/Process.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

constexpr Action ACTIONS[] = {Action::Add, Action::Change, Action::Remove, Action::None};

/// Whether the plan writes a new password.
bool WritesSecret(const DsnPlan& in_plan) {
    return std::ranges::any_of(in_plan.m_changes, [](const KeyChange& in_it) {
        return IsSecretKey(in_it.m_key) && !in_it.m_after.value_or("").empty();
    });
}

}  // namespace

void PrintJson(const Json& in_document) {
    std::cout << in_document.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
}

void PrintResult(const CommandLine& in_line, const std::string& in_text, const Json& in_document) {
    if (in_line.Has("--json")) return PrintJson(in_document);
    std::cout << in_text;
}

void PrintError(const std::string& in_text) {
    std::cout.flush();
    std::cerr << "veltrane-dsn: " << in_text << "\n";
}

void PrintPlan(const DsnPlan& in_plan, bool in_isDryRun, const std::string& in_place,
               bool in_areSecretsShown) {
    std::cout << in_plan.m_name << ": " << DescribeAction(in_plan.m_action, in_isDryRun) << in_place
              << "\n";
    if (!in_isDryRun) return;
    const bool isColoured = IsOutputColoured();
    for (const std::string& line : Difference(in_plan, in_areSecretsShown)) {
        const char* const colour = line.front() == '+' ? "\x1B[32m" : "\x1B[31m";
        std::cout << (isColoured ? colour + line + "\x1B[0m" : line) << "\n";
    }
}

Report::Report(const CommandLine& in_line, const DsnStore& in_store)
    : m_line(in_line), m_store(in_store) {
    // With sudo "the user" is root, which people do not expect.
    const bool isSudo = Orska::Support::GetEnvironment("SUDO_USER").has_value();
    if (isSudo || m_store.GetScope() == Scope::System) m_place = " in " + m_store.GetPath();
}

void Report::Add(const DsnPlan& in_plan) {
    const auto& [name, driver, action, changes, failure] = in_plan;
    if (!failure.empty()) {
        ++m_failures;
        PrintError(name + ": " + failure);
        m_results.push_back({{"name", name}, {"state", "failed"}, {"message", failure}});
        return;
    }
    ++m_counts[action];
    const bool isSame = action == Action::None;
    m_hasNewSecret = m_hasNewSecret || WritesSecret(in_plan);
    if (m_line.Has("--json")) {
        m_results.push_back({{"name", name},
                             {"state", isSame ? "unchanged" : "changed"},
                             {"action", isSame ? "none" : DescribeAction(action, false)},
                             {"difference", Difference(in_plan, m_line.Has("--show-secrets"))}});
    } else if (!m_line.Has("--quiet")) {
        PrintPlan(in_plan, m_line.Has("--dry-run"), isSame ? "" : m_place,
                  m_line.Has("--show-secrets"));
    }
}

void Report::AddNotice(const std::string& in_text) {
    if (!in_text.empty() && !m_line.Has("--quiet")) PrintError(in_text);
}

void Report::AddSummary() {
    if (m_line.Has("--json") || m_line.Has("--quiet")) return;
    std::vector<std::string> parts;
    const auto add = [&parts](std::size_t in_count, const std::string& in_what) {
        if (in_count != 0) parts.push_back(std::to_string(in_count) + " " + in_what);
    };
    for (const Action action : ACTIONS) {
        add(m_counts[action], DescribeAction(action, m_line.Has("--dry-run")));
    }
    add(m_failures, "failed");
    std::cout << (parts.empty() ? "nothing described" : Join(parts)) << "\n";
}

std::string Report::WarnOfReaders() const {
    const FileRights rights = m_store.GetRights();
    if (!m_hasNewSecret || !rights.m_isReadByOthers) return {};
    return m_store.GetPath() + " (mode " + rights.m_mode +
           ") now holds a password that every user of this machine can read. Narrow its mode, or "
           "remove the password (veltrane-dsn set NAME " +
           (m_store.GetScope() == Scope::System ? "--system " : "") +
           "--unset PWD) and let programs ask for it.";
}

ExitCode Report::Finish() {
    const std::string warning = m_line.Has("--dry-run") ? std::string() : WarnOfReaders();
    AddNotice(warning);
    if (m_line.Has("--json")) {
        Json summary;
        bool isChanged = false;
        for (const Action action : ACTIONS) {
            summary[DescribeAction(action, false)] = m_counts[action];
            isChanged = isChanged || (action != Action::None && m_counts[action] != 0);
        }
        summary["failed"] = m_failures;
        Json document{{"changed", isChanged},
                      {"summary", std::move(summary)},
                      {"failed", m_failures},
                      {"scope", GetScopeName(m_store.GetScope())},
                      {"dry_run", m_line.Has("--dry-run")}};
        if (!m_place.empty()) document["file"] = m_store.GetPath();
        if (!warning.empty()) document["warnings"] = {warning};
        document["results"] = std::move(m_results);
        PrintJson(document);
    }
    return m_failures == 0 ? EXIT_DONE : EXIT_FAILED;
}

}  // namespace Veltrane::Cli
