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

Report::Report(const CommandLine& in_line, Scope in_scope)
    : m_scope(in_scope),
      m_isJson(in_line.Has(OptionId::Json)),
      m_isQuiet(in_line.Has(OptionId::Quiet)),
      m_isDryRun(in_line.Has(OptionId::DryRun)),
      m_areSecretsShown(in_line.Has(OptionId::ShowSecrets)),
      m_isColoured(IsOutputColoured()),
      m_hasProgress(!m_isJson && !m_isQuiet && IsErrorTerminal()) {}

void Report::AddDone(const DsnPlan& in_plan) {
    ClearProgress();
    m_isChanged = m_isChanged || in_plan.m_action != Action::None;
    const std::vector<std::string> difference = Difference(in_plan, m_areSecretsShown);
    if (m_isJson) {
        m_results.push_back({{"name", in_plan.m_name},
                             {"state", StateName(in_plan)},
                             {"action", ActionName(in_plan.m_action)},
                             {"difference", difference},
                             {"kept", in_plan.m_kept}});
    } else if (!m_isQuiet) {
        Print(in_plan, difference);
    }
}

void Report::Print(const DsnPlan& in_plan, const std::vector<std::string>& in_difference) {
    std::cout << in_plan.m_name << ": " << DescribeAction(in_plan.m_action, m_isDryRun);
    if (in_plan.m_action == Action::Change && !in_plan.m_kept.empty()) {
        std::cout << "; put back what the setup library does not know:";
        for (const std::string& key : in_plan.m_kept) std::cout << " " << key;
    }
    std::cout << "\n";
    if (!m_isDryRun) return;
    for (const std::string& line : in_difference) {
        std::cout << Coloured(line, m_isColoured) << "\n";
    }
}

void Report::AddFailed(const std::string& in_dsn, const std::string& in_reason) {
    ClearProgress();
    ++m_failures;
    PrintError(in_dsn + ": " + in_reason);
    if (m_isJson) {
        m_results.push_back({{"name", in_dsn}, {"state", "failed"}, {"message", in_reason}});
    }
}

void Report::AddNotice(const std::string& in_text) {
    if (!in_text.empty() && !m_isQuiet) PrintError(in_text);
}

void Report::ShowProgress(std::size_t in_done, std::size_t in_count) {
    if (!m_hasProgress) return;
    std::cout.flush();
    std::cerr << "\r" << in_done << " of " << in_count << std::flush;
    m_isProgressShown = true;
}

void Report::ClearProgress() {
    if (m_isProgressShown) std::cerr << "\r\x1B[K" << std::flush;
    m_isProgressShown = false;
}

ExitCode Report::Finish() {
    ClearProgress();
    if (m_isJson) {
        PrintJson({{"changed", m_isChanged},
                   {"failed", m_failures},
                   {"scope", GetScopeName(m_scope)},
                   {"dry_run", m_isDryRun},
                   {"results", std::move(m_results)}});
    }
    return m_failures == 0 ? EXIT_DONE : EXIT_FAILED;
}

}  // namespace Veltrane::Cli
