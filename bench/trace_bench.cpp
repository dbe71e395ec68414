// The cost of a trace call: with tracing off, and on compared with fprintf of the same text to the
// same stream. The stream is the null device, which shows the work before the system call, or a
// file in the temporary folder. Names are who, work, text and size, joined by slashes, with the
// size of the message in bytes.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/support/TestSystem.h"
#include "tools/trace.h"
#ifdef _WIN32
#include "tools/WindowsApi.h"
#else
#include <unistd.h>
#endif

namespace {

using namespace Orska;
using Test::SetVariable;

#ifdef _WIN32
constexpr char NULL_DEVICE[] = "NUL";
unsigned GetThread() { return GetCurrentThreadId(); }
unsigned GetProcess() { return GetCurrentProcessId(); }
#else
constexpr char NULL_DEVICE[] = "/dev/null";
unsigned GetThread() { return static_cast<unsigned>(gettid()); }
unsigned GetProcess() { return static_cast<unsigned>(getpid()); }
#endif

constexpr char FUNCTION[] = "Orska::Support::TextFile::Clear";
constexpr char SOURCE[] = "PlatformAbstraction\\TextFile";

/// Turns the trace on with a setting such as "1" or "1st", into a file.
class Tracing {
public:
    Tracing(const char* in_flags, bool in_isFile)
        : m_path(in_isFile
                     ? std::filesystem::temp_directory_path().string() + "/orska_trace_bench.log"
                     : NULL_DEVICE),
          m_isFile(in_isFile) {
        SetVariable("TR4CE", (std::string(in_flags) + ":" + m_path).c_str());
        ResetTrace();
    }
    ~Tracing() {
        SetVariable("TR4CE", nullptr);
        ResetTrace();
        if (m_isFile) {
            std::filesystem::remove(m_path);
        }
    }

private:
    std::string m_path;
    bool m_isFile;
};

void OursOff(benchmark::State& io_state) {
    SetVariable("TR4CE", nullptr);
    ResetTrace();
    unsigned number = 0;
    for (auto _ : io_state) {
        ORSKA_TRACE(1, FUNCTION, SOURCE, 620, "section %s has %u keys", "name", ++number);
        benchmark::ClobberMemory();
    }
}

void OursOffFunction(benchmark::State& io_state) {
    SetVariable("TR4CE", nullptr);
    ResetTrace();
    unsigned number = 0;
    for (auto _ : io_state) {
        trace(1, FUNCTION, SOURCE, 620, "section %s has %u keys", "name", ++number);
        benchmark::ClobberMemory();
    }
}

void OursOn(benchmark::State& io_state, const char* in_flags, bool in_isFile) {
    const Tracing tracing(in_flags, in_isFile);
    const std::string text(static_cast<std::size_t>(io_state.range(0)), 'x');
    unsigned number = 0;
    for (auto _ : io_state) {
        ORSKA_TRACE(1, FUNCTION, SOURCE, 620, "section %s has %u keys", text.c_str(), ++number);
    }
}

void PeerOn(benchmark::State& io_state, const char* in_flags, bool in_isFile) {
    const Tracing tracing(in_flags, in_isFile);
    std::FILE* const stream = GetTraceStream();
    const std::string text(static_cast<std::size_t>(io_state.range(0)), 'x');
    unsigned number = 0;
    for (auto _ : io_state) {
        std::fprintf(stream, "%s:%d\tsection %s has %u keys %s\n", FUNCTION, 620, text.c_str(),
                     ++number, "TextFile");
    }
}

void PeerOnAllFields(benchmark::State& io_state, const char* in_flags, bool in_isFile) {
    const Tracing tracing(in_flags, in_isFile);
    std::FILE* const stream = GetTraceStream();
    const std::string text(static_cast<std::size_t>(io_state.range(0)), 'x');
    const auto start = std::chrono::steady_clock::now();
    unsigned number = 0;
    for (auto _ : io_state) {
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        const unsigned id = GetThread();
        std::fprintf(stream, "%s:%d\tsection %s has %u keys\t @%.5f #%04X pid:%u %s\n", FUNCTION,
                     620, text.c_str(), ++number, elapsed.count(), id >> 16 ^ (id & 0xFFFF),
                     GetProcess(), "TextFile");
    }
}

void Register(const char* in_name, void (*in_run)(benchmark::State&, const char*, bool),
              const char* in_flags, bool in_isFile, benchmark::IterationCount in_iterations) {
    auto* const bench = benchmark::RegisterBenchmark(in_name, in_run, in_flags, in_isFile);
    bench->Arg(20)->Arg(200)->Arg(4000)->Arg(20000);
    if (in_iterations != 0) {
        bench->Iterations(in_iterations);  // bounds the size of the file
    }
}

const int s_registered = [] {
    benchmark::RegisterBenchmark("ours/off", OursOff);
    benchmark::RegisterBenchmark("ours/off-function", OursOffFunction);
    Register("ours/on/null", OursOn, "1", false, 0);
    Register("fprintf/on/null", PeerOn, "1", false, 0);
    Register("ours/on/null-all-fields", OursOn, "1fstp", false, 0);
    Register("fprintf/on/null-all-fields", PeerOnAllFields, "1", false, 0);
    Register("ours/on/file", OursOn, "1", true, 5000);
    Register("fprintf/on/file", PeerOn, "1", true, 5000);
    return 0;
}();

}  // namespace
