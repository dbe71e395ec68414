#include "bench/TranscodeGoals.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "PlatformAbstraction/base/CpuLevel.h"

namespace Orska::Bench {

namespace {

// Counts the runs in which ours is so many times as fast as a peer, and keeps the slowest one.
struct Tally {
    int m_count = 0;
    int m_met = 0;
    double m_least = 0;
    std::string m_leastName;

    void Add(const std::string& in_name, double in_ratio, double in_goal) {
        if (m_count == 0 || in_ratio < m_least) {
            m_least = in_ratio;
            m_leastName = in_name;
        }
        ++m_count;
        m_met += in_ratio >= in_goal ? 1 : 0;
    }
    std::string GetText() const {
        if (m_count == 0) return "not measured";
        char text[128];
        std::snprintf(text, sizeof text, "%d of %d (least %.2f, %s)", m_met, m_count, m_least,
                      m_leastName.c_str());
        return text;
    }
};

}  // namespace

const char* GetLevelName() {
    constexpr const char* NAMES[] = {"sse2", "sse3", "ssse3", "sse41", "sse42", "avx2", "avx512"};
    return NAMES[static_cast<int>(Support::GetCpuLevel())];
}

bool GoalReporter::ReportContext(const Context& in_context) {
    return m_display->ReportContext(in_context);
}

void GoalReporter::ReportRuns(const std::vector<Run>& in_report) {
    for (const Run& run : in_report) {
        const auto rate = run.counters.find("bytes_per_second");
        if (run.run_type != Run::RT_Iteration || rate == run.counters.end()) continue;
        double& best = m_rates[run.run_name.function_name];
        best = std::max<double>(best, rate->second);
    }
    m_display->ReportRuns(in_report);
}

void GoalReporter::Finalize() { m_display->Finalize(); }

std::string GoalReporter::GetGoals() const {
    const std::string level = GetLevelName();
    const std::map<std::string, std::string> forms = {
        {"sse42", "westmere"}, {"avx2", "haswell"}, {"avx512", "icelake"}};
    const auto form = forms.find(level);
    const std::string simdutf = form == forms.end() ? "none" : "simdutf-" + form->second;
    const std::string theirs = simdutf + "/";
    const std::string ours = "ours-" + level + "/";
    Tally vector;
    Tally cp1252;
    for (const auto& [who, rate] : m_rates) {
        if (who.compare(0, ours.size(), ours) != 0) continue;
        const std::string name = who.substr(ours.size());
        if (const auto peer = m_rates.find(theirs + name); peer != m_rates.end()) {
            vector.Add(name, rate / peer->second, 1.0);
        }
        const bool isLong = std::atoi(name.c_str() + name.rfind('/') + 1) >= 256;
        if (const auto peer = m_rates.find("icu/" + name);
            name.rfind("cp1252-utf8/w1252/", 0) == 0 && isLong && peer != m_rates.end()) {
            cp1252.Add(name, rate / peer->second, 10.0);
        }
    }
    return "Level " + level + ": as fast as " + simdutf + " in " + vector.GetText() +
           "; w1252 from cp1252 to UTF-8 10 times as fast as ICU from 256 bytes on in " +
           cp1252.GetText() + ".";
}

}  // namespace Orska::Bench
