// Loading an INI file, reading lines and looking up a setting, compared with their peers.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string>

#include "PlatformAbstraction/files/TextFile.h"
#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"
#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "PlatformAbstraction/settings/SettingKeys.h"
#ifdef ORSKA_HAVE_GLIB
#include <glib.h>
#endif
#ifdef ORSKA_HAVE_INIH
#include <ini.h>
#endif

namespace {

using namespace Orska::Support;

constexpr int SECTIONS = 200;
constexpr int KEYS_PER_SECTION = 100;

/// 20,000 keys in 200 sections, 1 MiB; deleted at the end of the program.
class IniFile {
public:
    IniFile() {
        m_path = (std::filesystem::temp_directory_path() /
                  ("orska_bench." + std::to_string(getpid()) + ".ini"))
                     .string();
        std::string text;
        for (int section = 0; section < SECTIONS; ++section) {
            text += "[Section " + std::to_string(section) + "]\n";
            for (int key = 0; key < KEYS_PER_SECTION; ++key) {
                char line[64];
                // Keys out of order, as people write them.
                std::snprintf(line, sizeof line,
                              "Setting%04d = value of the setting, number %05d\n",
                              key * 37 % KEYS_PER_SECTION, section * KEYS_PER_SECTION + key);
                text += line;
            }
        }
        text.resize((1 << 20) - 1, '#');
        text += '\n';
        if (!(std::ofstream(m_path, std::ios::binary) << text).flush()) std::abort();
    }
    ~IniFile() { std::remove(m_path.c_str()); }

    static const std::string& GetPath() {
        static const IniFile s_file;
        return s_file.m_path;
    }

private:
    std::string m_path;
};

void CheckCount(benchmark::State& io_state, std::size_t in_count, std::size_t in_expected) {
    if (in_count != in_expected) {
        io_state.SkipWithError("wrong count");
    }
    io_state.SetBytesProcessed(io_state.iterations() * (1 << 20));
}

// Loading.

void LoadOurs(benchmark::State& io_state) {
    const orska_wstring path = IniFile::GetPath();
    const IniFileConfigurationReader reader(false, false);
    std::size_t count = 0;
    for (auto _ : io_state) {
        ConfigurationMap configuration;
        reader.LoadConfiguration(configuration, path, nullptr);
        count = configuration.size() * configuration.begin()->second.GetSize();
    }
    CheckCount(io_state, count, SECTIONS * KEYS_PER_SECTION);
}
BENCHMARK(LoadOurs)->Name("ours/load-ini/1MiB")->Unit(benchmark::kMicrosecond);

#ifdef ORSKA_HAVE_GLIB
void LoadGKeyFile(benchmark::State& io_state) {
    std::size_t count = 0;
    for (auto _ : io_state) {
        GKeyFile* file = g_key_file_new();
        g_key_file_load_from_file(file, IniFile::GetPath().c_str(), G_KEY_FILE_NONE, nullptr);
        gsize length = 0;
        g_strfreev(g_key_file_get_groups(file, &length));
        count = length * KEYS_PER_SECTION;
        g_key_file_free(file);
    }
    CheckCount(io_state, count, SECTIONS * KEYS_PER_SECTION);
}
BENCHMARK(LoadGKeyFile)->Name("gkeyfile/load-ini/1MiB")->Unit(benchmark::kMicrosecond);
#endif

#ifdef ORSKA_HAVE_INIH
using InihMap = std::map<std::string, std::map<std::string, std::string>>;

int StoreInih(void* out_map, const char* in_section, const char* in_name, const char* in_value) {
    (*static_cast<InihMap*>(out_map))[in_section][in_name] = in_value;
    return 1;
}

void LoadInih(benchmark::State& io_state) {
    std::size_t count = 0;
    for (auto _ : io_state) {
        InihMap configuration;
        ini_parse(IniFile::GetPath().c_str(), &StoreInih, &configuration);
        count = configuration.size() * configuration.begin()->second.size();
    }
    CheckCount(io_state, count, SECTIONS * KEYS_PER_SECTION);
}
BENCHMARK(LoadInih)->Name("inih/load-ini/1MiB")->Unit(benchmark::kMicrosecond);
#endif

// Lines.

constexpr std::size_t LINES = SECTIONS * (KEYS_PER_SECTION + 1) + 1;

void LinesOurs(benchmark::State& io_state) {
    const orska_wstring path = IniFile::GetPath();
    std::size_t count = 0;
    for (auto _ : io_state) {
        TextFile file(path, TextFile::MODE_READ);
        count = 0;
        for (std::string line; file.ReadLine(line);) {
            ++count;
        }
    }
    CheckCount(io_state, count, LINES);
}
BENCHMARK(LinesOurs)->Name("ours/readline/1MiB")->Unit(benchmark::kMicrosecond);

#ifdef _WIN32
constexpr int READING = O_RDONLY | O_BINARY;
#else
constexpr int READING = O_RDONLY | O_CLOEXEC;
#endif

bool ReadLineBytewise(int in_descriptor, std::string& out_line) {
    out_line.clear();
    unsigned char byte = 0;
    if (read(in_descriptor, &byte, 1) != 1 || byte == 0xFF) {
        return false;
    }
    do {
        if (byte == '\n') {
            return true;
        }
        if (byte != '\r') {
            out_line += static_cast<char>(byte);
        }
    } while (read(in_descriptor, &byte, 1) == 1 && byte != 0xFF);
    return true;
}

void LinesRead(benchmark::State& io_state) {
    std::size_t count = 0;
    for (auto _ : io_state) {
        const int descriptor = open(IniFile::GetPath().c_str(), READING);
        count = 0;
        for (std::string line; ReadLineBytewise(descriptor, line);) {
            ++count;
        }
        close(descriptor);
    }
    CheckCount(io_state, count, LINES);
}
BENCHMARK(LinesRead)->Name("read/readline/1MiB")->Unit(benchmark::kMicrosecond);

void LinesGetline(benchmark::State& io_state) {
    std::size_t count = 0;
    for (auto _ : io_state) {
        std::ifstream file(IniFile::GetPath(), std::ios::binary);
        count = 0;
        for (std::string line; std::getline(file, line);) {
            ++count;
        }
    }
    CheckCount(io_state, count, LINES);
}
BENCHMARK(LinesGetline)->Name("getline/readline/1MiB")->Unit(benchmark::kMicrosecond);

// Look-ups.

const std::string KEYS[] = {
    SETTING_DRIVER_LOCALE,    SETTING_LOG_LEVEL,      SETTING_LOG_PATH,
    SETTING_LOG_TYPE,         SETTING_LOG_FILE_COUNT, SETTING_LOG_FILE_SIZE,
    SETTING_SERVICE_NAME,     SETTING_ODBC_INST_LIB,  SETTING_SWAP_FILE_PATH,
    SETTING_TRACE_TO_STD_ERR, SETTING_LOG_NAMESPACE,  SETTING_MEMORY_MANAGER_STRATEGY,
};
constexpr std::size_t KEY_COUNT = std::size(KEYS);

void GetSettingOurs(benchmark::State& io_state) {
    OrskaSettingReader::Initialize(L"orska_bench_without_key", L"");
    for (const std::string& key : KEYS) {
        OrskaSettingReader::GetSetting(key);
        OrskaSettingReader::SetSetting(key, "value");
    }
    std::size_t index = 0;
    for (auto _ : io_state) {
        benchmark::DoNotOptimize(OrskaSettingReader::GetSetting(KEYS[index]));
        index = index + 1 == KEY_COUNT ? 0 : index + 1;
    }
    io_state.SetItemsProcessed(io_state.iterations());
}
BENCHMARK(GetSettingOurs)->Name("ours/get-setting/present");

struct CaseLess {
    bool operator()(const std::string& in_left, const std::string& in_right) const {
        return strcasecmp(in_left.c_str(), in_right.c_str()) < 0;
    }
};

void GetSettingMap(benchmark::State& io_state) {
    static std::recursive_mutex s_lock;
    static std::map<std::string, std::string, CaseLess> s_map;
    for (const std::string& key : KEYS) {
        s_map[key] = "value";
    }
    std::size_t index = 0;
    for (auto _ : io_state) {
        const std::lock_guard guard(s_lock);
        std::string value = s_map.find(KEYS[index])->second;
        benchmark::DoNotOptimize(value);
        index = index + 1 == KEY_COUNT ? 0 : index + 1;
    }
    io_state.SetItemsProcessed(io_state.iterations());
}
BENCHMARK(GetSettingMap)->Name("map/get-setting/present");

}  // namespace
