#include "cli/commands/Report.h"

#include <iostream>

#include "cli/system/Terminal.h"

namespace Veltrane::Cli {

namespace {

std::string Coloured(const std::string& in_line, bool in_isColoured) {
    if (!in_isColoured) return in_line;
    return (in_line.front() == '+' ? "\x1B[32m" : "\x1B[31m") + in_line + "\x1B[0m";
}

const char* StateName(const DsnPlan& in_plan) {
    return in_plan.m_action == Action::None ? "unchanged" : "changed";
}

std::string ActionName(Action in_action) {
    return in_action == Action::None ? "none" : DescribeAction(in_action, false);
}

}  // namespace

void PrintJson(const Json& in_document) {
    std::cout << in_document.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
}

void PrintError(const std::string& in_text) {
    std::cout.flush();
    std::cerr << "veltrane-dsn: " << in_text << "\n";
}

Report::Report(const CommandLine& in_line, const DsnStore& in_store)
    : m_scope(in_store.GetScope()),
      m_path(in_store.GetPath()),
      m_isJson(in_line.Has(OptionId::Json)),
      m_isQuiet(in_line.Has(OptionId::Quiet)),
      m_isDryRun(in_line.Has(OptionId::DryRun)),
      m_areSecretsShown(in_line.Has(OptionId::ShowSecrets)),
      m_isColoured(IsOutputColoured()) {
    // With sudo "the user" is another one than people think.
    std::string user;
    const bool isOwn = m_scope == Scope::User && !ReadVariable("SUDO_USER", user);
    if (!isOwn) m_place = " in " + m_path;
}

void Report::AddDone(const DsnPlan& in_plan) {
    ++m_counts[static_cast<std::size_t>(in_plan.m_action)];
    const std::vector<std::string> difference = Difference(in_plan, m_areSecretsShown);
    if (m_isJson) {
        m_results.push_back({{"name", in_plan.m_name},
                             {"state", StateName(in_plan)},
                             {"action", ActionName(in_plan.m_action)},
                             {"difference", difference}});
    } else if (!m_isQuiet) {
        Print(in_plan, difference);
    }
}

void Report::Print(const DsnPlan& in_plan, const std::vector<std::string>& in_difference) {
    std::cout << in_plan.m_name << ": " << DescribeAction(in_plan.m_action, m_isDryRun);
    std::cout << (in_plan.m_action == Action::None ? "" : m_place) << "\n";
    if (!m_isDryRun) return;
    for (const std::string& line : in_difference) {
        std::cout << Coloured(line, m_isColoured) << "\n";
    }
}

void Report::AddFailed(const std::string& in_dsn, const std::string& in_reason) {
    ++m_failures;
    PrintError(in_dsn + ": " + in_reason);
    if (m_isJson) {
        m_results.push_back({{"name", in_dsn}, {"state", "failed"}, {"message", in_reason}});
    }
}

void Report::AddNotice(const std::string& in_text) {
    if (!in_text.empty() && !m_isQuiet) PrintError(in_text);
}

void Report::AddSummary() {
    if (m_isJson || m_isQuiet) return;
    std::string text;
    const auto add = [&text](std::size_t in_count, const std::string& in_what) {
        if (in_count == 0) return;
        text += (text.empty() ? "" : ", ") + std::to_string(in_count) + " " + in_what;
    };
    for (const Action action : {Action::Add, Action::Change, Action::Remove, Action::None}) {
        add(m_counts[static_cast<std::size_t>(action)], DescribeAction(action, m_isDryRun));
    }
    add(m_failures, "failed");
    std::cout << (text.empty() ? "nothing described" : text) << "\n";
}

ExitCode Report::Finish() {
    if (m_isJson) {
        const auto count = [this](Action in_action) {
            return m_counts[static_cast<std::size_t>(in_action)];
        };
        const std::size_t changes =
            count(Action::Add) + count(Action::Change) + count(Action::Remove);
        Json document{{"changed", changes != 0},
                      {"summary",
                       {{"added", count(Action::Add)},
                        {"changed", count(Action::Change)},
                        {"removed", count(Action::Remove)},
                        {"unchanged", count(Action::None)},
                        {"failed", m_failures}}},
                      {"failed", m_failures},
                      {"scope", GetScopeName(m_scope)},
                      {"dry_run", m_isDryRun}};
        if (!m_place.empty()) document["file"] = m_path;
        document["results"] = std::move(m_results);
        PrintJson(document);
    }
    return m_failures == 0 ? EXIT_DONE : EXIT_FAILED;
}

}  // namespace Veltrane::Cli
