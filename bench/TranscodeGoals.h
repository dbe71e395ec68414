/// The line about the goals at the end of the transcoding benchmark, for the runs that were made.
/// The reporter passes everything on to the one that the command line asks for.
#ifndef BENCH_TRANSCODEGOALS_H
#define BENCH_TRANSCODEGOALS_H

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>

namespace Orska::Bench {

/// The processor level in use, for example "avx512".
const char* GetLevelName();

/// Keeps the fastest repetition of every run, by its name.
class GoalReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& in_context) override;
    void ReportRuns(const std::vector<Run>& in_report) override;
    void Finalize() override;

    /// The level and the goals that are met: at least the speed of simdutf's form for the same
    /// level, and cp1252 to UTF-8 ten times as fast as ICU on w1252 from 256 bytes on.
    std::string GetGoals() const;

private:
    std::unique_ptr<BenchmarkReporter> m_display{benchmark::CreateDefaultDisplayReporter()};
    std::map<std::string, double> m_rates;  // bytes a second
};

}  // namespace Orska::Bench

#endif
