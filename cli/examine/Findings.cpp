#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "cli/examine/Findings.h"
#include "cli/line/HelpText.h"
#include "cli/system/Process.h"

namespace Veltrane::Cli {

namespace {

/// A word and a colour for each severity.
constexpr std::pair<const char*, const char*> SEVERITIES[] = {
    {"error", "\x1B[31m"}, {"warning", "\x1B[33m"}, {"note", "\x1B[36m"}};

}  // namespace

bool HasError(const Findings& in_findings) {
    return std::ranges::count(in_findings, Severity::Error, &Finding::m_severity) != 0;
}

nlohmann::ordered_json ToJson(const Findings& in_findings) {
    auto list = nlohmann::ordered_json::array();
    for (const Finding& finding : in_findings) {
        list.push_back({{"severity", SEVERITIES[static_cast<int>(finding.m_severity)].first},
                        {"id", finding.m_id},
                        {"text", finding.m_text},
                        {"repair", finding.m_repair}});
    }
    return list;
}

void PrintFindings(const Findings& in_findings) {
    const bool isColoured = IsOutputColoured();
    for (const Finding& finding : in_findings) {
        const auto& [name, colour] = SEVERITIES[static_cast<int>(finding.m_severity)];
        std::string text = Wrap(std::string(name) + ": " + finding.m_text, 0);
        if (isColoured) text.insert(text.find(':'), "\x1B[0m").insert(0, colour);
        std::cout << text << Wrap("Repair: " + finding.m_repair, 4);
    }
}

}  // namespace Veltrane::Cli
