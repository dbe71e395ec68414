// Commands of veltrane-dsn on a user's odbc.ini of many data sources, run as main runs them,
// without their output. Peers: a plain program that reads the file into a map, changes it and
// writes it whole, as a script does, and the setup library's own load and save. All but "plain"
// lock the file; all sync it. The file is in the folder for temporary files.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <odbcinst.h>
#include <unistd.h>

#include <iostream>
#include <map>
#include <sstream>
#include <vector>

#include "Setup/OdbcInstaller.h"
#include "Setup/VeltraneDSNConfiguration.h"
#include "cli/commands/Commands.h"
#include "cli/line/CommandLine.h"
#include "tests/support/IniScratch.h"

namespace {

using Orska::Support::orska_wstring;
using Veltrane::Test::IniScratch;

const std::pair<const char*, const char*> VALUES[] = {{"Namespace", "corporate"},
                                                      {"LoginMode", "1"},
                                                      {"UID", "user"},
                                                      {"PWD", "p=;#'x"},
                                                      {"Database", "sales"}};

const IniScratch& Scratch() {
    static const IniScratch s_scratch;
    IniScratch::Write(s_scratch.Folder() / "system" / "odbcinst.ini", "[Veltrane]\nSetup=/x\n");
    return s_scratch;
}

std::string Name(long in_number) { return "dsn" + std::to_string(in_number); }
std::string Server(long in_number) { return "server" + std::to_string(in_number) + ".example.com"; }

void FillFile(long in_count) {
    std::string text;
    for (long i = 0; i < in_count; ++i) {
        text += "[" + Name(i) + "]\nDriver=Veltrane\nServer=" + Server(i) + "\n";
        for (const auto& [key, value] : VALUES) text += std::string(key) + "=" + value + "\n";
        text += "\n";
    }
    IniScratch::Write(Scratch().UserFile(), text);
    SQLSetConfigMode(ODBC_USER_DSN);
}

std::string WriteDescription(long in_count) {
    std::string text = "[";
    for (long i = 0; i < in_count; ++i) {
        text += std::string(i == 0 ? "" : ",") + "{\"name\":\"" + Name(i) +
                "\",\"values\":{\"Server\":\"" + Server(i) + "\"";
        for (const auto& [key, value] : VALUES) {
            text += std::string(",\"") + key + "\":\"" + value + "\"";
        }
        text += "}}";
    }
    const std::filesystem::path path = Scratch().Folder() / "description.json";
    IniScratch::Write(path, text + "]");
    return path.string();
}

/// Runs a command of the tool.
void RunTool(benchmark::State& io_state, const std::vector<std::string>& in_arguments) {
    std::ostringstream output;
    std::streambuf* const before = std::cout.rdbuf(output.rdbuf());
    try {
        if (Veltrane::Cli::RunCommand(Veltrane::Cli::ParseCommandLine(in_arguments)) != 0) {
            io_state.SkipWithError("failed");
        }
    } catch (const std::exception& error) {
        io_state.SkipWithError(error.what());
    }
    std::cout.rdbuf(before);
}

template <const char* Command>
void ReadOurs(benchmark::State& io_state) {
    FillFile(io_state.range(0));
    for (auto _ : io_state) RunTool(io_state, {Command});
}

void ApplyOurs(benchmark::State& io_state) {
    const std::string path = WriteDescription(io_state.range(0));
    for (auto _ : io_state) {
        io_state.PauseTiming();
        IniScratch::Write(Scratch().UserFile(), "");
        io_state.ResumeTiming();
        RunTool(io_state, {"apply", path});
    }
}

void ApplyOursAgain(benchmark::State& io_state) {
    FillFile(io_state.range(0));
    const std::string path = WriteDescription(io_state.range(0));
    for (auto _ : io_state) RunTool(io_state, {"apply", path});
}

void SetOurs(benchmark::State& io_state) {
    FillFile(io_state.range(0));
    long number = 0;
    for (auto _ : io_state) {
        RunTool(io_state, {"set", Name(io_state.range(0) / 2), "--server", Server(++number)});
    }
}

void SaveLibrary(benchmark::State& io_state) {
    FillFile(io_state.range(0));
    const orska_wstring attributes(std::string("DSN=" + Name(io_state.range(0) / 2) + '\0'));
    long number = 0;
    for (auto _ : io_state) {
        const Veltrane::ODBC::OdbcInstaller::Request request;
        Veltrane::ODBC::VeltraneDSNConfiguration record{orska_wstring("Veltrane")};
        record.Load(attributes);
        record.SetServer(orska_wstring(Server(++number)));
        record.Save();
    }
}

/// The sections of a file in their order, without comments.
class PlainIni {
public:
    explicit PlainIni(const std::filesystem::path& in_path) : m_path(in_path) {
        std::istringstream lines(IniScratch::Read(in_path));
        std::string section;
        for (std::string line; std::getline(lines, line);) {
            const std::size_t equals = line.find('=');
            if (line.starts_with('[')) section = line.substr(1, line.find(']') - 1);
            if (equals != std::string::npos) {
                Set(section, line.substr(0, equals), line.substr(equals + 1));
            }
        }
    }

    void Set(const std::string& in_section, const std::string& in_key,
             const std::string& in_value) {
        const auto [place, isNew] = m_places.try_emplace(in_section, m_sections.size());
        if (isNew) m_sections.emplace_back(in_section, Keys());
        Keys& keys = m_sections[place->second].second;
        for (auto& [key, value] : keys) {
            if (key != in_key) continue;
            value = in_value;
            return;
        }
        keys.emplace_back(in_key, in_value);
    }

    void Save() const {
        std::string text;
        for (const auto& [name, keys] : m_sections) {
            text += "[" + name + "]\n";
            for (const auto& [key, value] : keys) text += key + "=" + value + "\n";
            text += "\n";
        }
        const std::string temporary = m_path.string() + ".new";
        IniScratch::Write(temporary, text);
        const int file = open(temporary.c_str(), O_RDONLY);
        fsync(file);
        close(file);
        std::filesystem::rename(temporary, m_path);
    }

private:
    using Keys = std::vector<std::pair<std::string, std::string>>;
    std::filesystem::path m_path;
    std::vector<std::pair<std::string, Keys>> m_sections;
    std::map<std::string, std::size_t> m_places;
};

void ApplyPlain(benchmark::State& io_state) {
    for (auto _ : io_state) {
        io_state.PauseTiming();
        IniScratch::Write(Scratch().UserFile(), "");
        io_state.ResumeTiming();
        PlainIni ini(Scratch().UserFile());
        for (long i = 0; i < io_state.range(0); ++i) {
            ini.Set(Name(i), "Driver", "Veltrane");
            ini.Set(Name(i), "Server", Server(i));
            for (const auto& [key, value] : VALUES) ini.Set(Name(i), key, value);
        }
        ini.Save();
    }
}

void SetPlain(benchmark::State& io_state) {
    FillFile(io_state.range(0));
    long number = 0;
    for (auto _ : io_state) {
        PlainIni ini(Scratch().UserFile());
        ini.Set(Name(io_state.range(0) / 2), "Server", Server(++number));
        ini.Save();
    }
}

constexpr char LIST_DSNS[] = "list";
constexpr char CHECK_DSNS[] = "check";
constexpr char EXPORT_DSNS[] = "export";

void Sizes(benchmark::internal::Benchmark* io_benchmark) {
    io_benchmark->Arg(1000)->Arg(10000)->Arg(20000)->UseRealTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(ReadOurs<LIST_DSNS>)->Name("ours/list/dsns")->Apply(Sizes);
BENCHMARK(ReadOurs<CHECK_DSNS>)->Name("ours/check/dsns")->Apply(Sizes);
BENCHMARK(ReadOurs<EXPORT_DSNS>)->Name("ours/export/dsns")->Apply(Sizes);
BENCHMARK(SetOurs)->Name("ours/set/dsns")->Apply(Sizes);
BENCHMARK(SaveLibrary)->Name("library/set/dsns")->Apply(Sizes);
BENCHMARK(SetPlain)->Name("plain/set/dsns")->Apply(Sizes);
BENCHMARK(ApplyOurs)->Name("ours/apply/dsns")->Apply(Sizes)->Arg(100000);
BENCHMARK(ApplyOursAgain)->Name("ours/apply_again/dsns")->Apply(Sizes)->Arg(100000);
BENCHMARK(ApplyPlain)->Name("plain/apply/dsns")->Apply(Sizes)->Arg(100000);

}  // namespace
