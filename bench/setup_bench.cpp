// Loads and saves one data source in a user's odbc.ini of many: through our record, and by the same
// calls to the installer library's profile functions. The file is in the folder for temporary
// files; ours syncs it, the installer library does not. "floor" is the least that a safe save does,
// without parsing: it reads the file, writes its bytes to a temporary file, syncs and renames that,
// and syncs the directory.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <odbcinst.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "Setup/OdbcInstaller.h"
#include "Setup/VeltraneDSNConfiguration.h"
#include "tests/support/IniScratch.h"

namespace {

using Orska::Support::orska_wstring;
using Veltrane::ODBC::VeltraneDSNConfiguration;
using Veltrane::Test::IniScratch;

constexpr char DRIVER[] = "Veltrane";
constexpr char FILE_NAME[] = "odbc.ini";

IniScratch& Scratch() {
    static IniScratch s_scratch;
    return s_scratch;
}

std::string Name(long in_number) { return "Data source " + std::to_string(in_number); }

/// Fills the file and returns the name of the data source in its middle.
std::string FillFile(long in_count) {
    std::string text;
    for (long i = 0; i < in_count; ++i) {
        text += "[" + Name(i) + "]\nDriver=Veltrane\nServer=server" + std::to_string(i) +
                ".example.com\nNamespace=corporate\nLoginMode=1\nUID=user\nPWD=p=;#'x\n"
                "Database=sales\n\n";
    }
    IniScratch::Write(Scratch().UserFile(), text);
    chmod(Scratch().UserFile().c_str(), 0600);  // as a save creates a new file
    SQLSetConfigMode(ODBC_USER_DSN);
    return Name(in_count / 2);
}

orska_wstring AttributesOf(const std::string& in_dsn) {
    return orska_wstring(std::string("DSN=" + in_dsn + '\0'));
}

/// Empties the installer library's cache, as in a new process.
void EmptyTheirCache() { SQLWritePrivateProfileString("-", nullptr, nullptr, "/dev/null"); }

void LoadOurs(benchmark::State& io_state) {
    const orska_wstring attributes = AttributesOf(FillFile(io_state.range(0)));
    for (auto _ : io_state) {
        const Veltrane::ODBC::OdbcInstaller::Request request;
        VeltraneDSNConfiguration record{orska_wstring(DRIVER)};
        record.Load(attributes);
        if (record.GetDatabase() != orska_wstring("sales")) io_state.SkipWithError("wrong value");
    }
}

void SaveOurs(benchmark::State& io_state) {
    VeltraneDSNConfiguration record{orska_wstring(DRIVER)};
    record.Load(AttributesOf(FillFile(io_state.range(0))));
    long number = 0;
    for (auto _ : io_state) {
        const Veltrane::ODBC::OdbcInstaller::Request request;
        record.SetServer(orska_wstring("new" + std::to_string(++number)));
        record.Save();
    }
}

bool CopyAndReplace(const std::string& in_path) {
    const int file = open(in_path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    fstat(file, &status);
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    const ssize_t size = read(file, text.data(), text.size());
    close(file);
    const std::string temporary = in_path + ".new";
    const int copy = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    bool isGood =
        size == status.st_size && write(copy, text.data(), text.size()) == size && fsync(copy) == 0;
    isGood = close(copy) == 0 && isGood && rename(temporary.c_str(), in_path.c_str()) == 0;
    const std::string folder = in_path.substr(0, in_path.rfind('/'));
    const int directory = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    isGood = isGood && fsync(directory) == 0;
    return close(directory) == 0 && isGood;
}

void SaveFloor(benchmark::State& io_state) {
    FillFile(io_state.range(0));
    const std::string path = Scratch().UserFile();
    for (auto _ : io_state) {
        if (!CopyAndReplace(path)) io_state.SkipWithError("not replaced");
    }
}

void Get(const std::string& in_dsn, const char* in_key, char* out_value, int in_size) {
    SQLGetPrivateProfileString(in_dsn.c_str(), in_key, "", out_value, in_size, FILE_NAME);
}

void LoadTheirs(benchmark::State& io_state) {
    const std::string dsn = FillFile(io_state.range(0));
    char value[260] = "";
    for (auto _ : io_state) {
        io_state.PauseTiming();
        EmptyTheirCache();
        io_state.ResumeTiming();
        bool isGood = SQLValidDSN(dsn.c_str());
        for (const char* key : {"Server", "Namespace", "LoginMode", "UID", "PWD", "Database"}) {
            Get(dsn, key, value, sizeof value);
        }
        if (!isGood || std::string(value) != "sales") io_state.SkipWithError("wrong value");
    }
}

void SaveTheirs(benchmark::State& io_state) {
    const std::string dsn = FillFile(io_state.range(0));
    long number = 0;
    for (auto _ : io_state) {
        char driver[32] = "";
        Get(dsn, "Driver", driver, sizeof driver);
        bool isGood = driver[0] != '\0' && SQLRemoveDSNFromIni(dsn.c_str()) &&
                      SQLWriteDSNToIni(dsn.c_str(), DRIVER);
        const std::string server = "new" + std::to_string(++number);
        const std::pair<const char*, const char*> values[] = {{"Driver", DRIVER},
                                                              {"Server", server.c_str()},
                                                              {"Namespace", "corporate"},
                                                              {"LoginMode", "1"},
                                                              {"UID", "user"},
                                                              {"PWD", "p=;#'x"},
                                                              {"Database", "sales"}};
        for (const auto& [key, value] : values) {
            isGood = isGood && SQLWritePrivateProfileString(dsn.c_str(), key, value, FILE_NAME);
        }
        if (!isGood) io_state.SkipWithError("refused");
    }
}

BENCHMARK(LoadOurs)->Name("ours/load/dsns")->Arg(10)->Arg(1000)->Arg(10000)->UseRealTime();
BENCHMARK(LoadTheirs)->Name("installer/load/dsns")->Arg(10)->Arg(1000)->Arg(10000)->UseRealTime();
BENCHMARK(SaveOurs)->Name("ours/save/dsns")->Arg(10)->Arg(1000)->Arg(10000)->UseRealTime();
BENCHMARK(SaveFloor)->Name("floor/save/dsns")->Arg(10)->Arg(1000)->Arg(10000)->UseRealTime();
BENCHMARK(SaveTheirs)->Name("installer/save/dsns")->Arg(10)->Arg(1000)->Arg(10000)->UseRealTime();

}  // namespace
