#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "cli/examine/Findings.h"
#include "cli/line/HelpText.h"
#include "cli/system/Process.h"

namespace Veltrane::Cli {

namespace {

std::string GetName(Severity in_severity) {
    constexpr const char* NAMES[] = {"error", "warning", "note"};
    return NAMES[static_cast<std::size_t>(in_severity)];
}

}  // namespace

bool HasError(const Findings& in_findings) {
    return std::ranges::count(in_findings, Severity::Error, &Finding::m_severity) != 0;
}

nlohmann::ordered_json ToJson(const Findings& in_findings) {
    auto list = nlohmann::ordered_json::array();
    for (const Finding& finding : in_findings) {
        list.push_back({{"severity", GetName(finding.m_severity)},
                        {"id", finding.m_id},
                        {"text", finding.m_text},
                        {"repair", finding.m_repair}});
    }
    return list;
}

void PrintFindings(const Findings& in_findings) {
    constexpr const char* COLOURS[] = {"\x1B[31m", "\x1B[33m", "\x1B[36m"};
    const bool isColoured = IsOutputColoured();
    for (const Finding& finding : in_findings) {
        const std::string name = GetName(finding.m_severity);
        std::string text = Wrap(name + ": " + finding.m_text, 0);
        if (isColoured) {
            text.insert(name.size(), "\x1B[0m");
            text.insert(0, COLOURS[static_cast<std::size_t>(finding.m_severity)]);
        }
        std::cout << text << Wrap("Repair: " + finding.m_repair, 4);
    }
}

}  // namespace Veltrane::Cli
