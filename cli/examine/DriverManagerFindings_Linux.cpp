#include <dlfcn.h>
#include <odbcinst.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "cli/examine/ApartWork.h"
#include "cli/examine/Findings.h"

namespace Veltrane::Cli {

namespace {

/// The installer library has no version; the driver manager beside it has one as text (SQL_DM_VER).
std::string FindVersionBeside(const std::string& in_library) {
    std::ifstream file(std::filesystem::path(in_library).parent_path() / "libodbc.so.2",
                       std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    constexpr std::string_view BEGIN("\0002.", 3);  // with the end of the text before it
    for (std::size_t at = 0; (at = bytes.find(BEGIN, at)) != std::string::npos; ++at) {
        const std::string text = bytes.c_str() + at + 1;
        const bool isVersion = text.find_first_not_of("0123456789.") == std::string::npos &&
                               std::count(text.begin(), text.end(), '.') == 2;
        if (isVersion && text.size() <= 16) return text;
    }
    return {};
}

struct Defect {
    const char* m_first;  ///< the first version with it
    const char* m_last;   ///< the last version known to have it; null: all
    const char* m_id;
    const char* m_text;
    const char* m_repair;
};

constexpr Defect DEFECTS[] = {
    {"2.3.13", nullptr, "manager-locks-requests",
     "It holds a lock while a driver's setup library runs. Setup libraries that ask it for a value "
     "or for the config mode then wait for ever; the one of this driver does not.",
     "If a program hangs while it configures another driver, use unixODBC 2.3.12 for it."},
    {"2.0", "2.3.11", "manager-remembers-values",
     "Its profile functions cache files for 20 seconds, and programs cannot make them read again. "
     "A running program can see a changed DSN 20 seconds later.",
     "Wait 20 seconds, or start the program again; 2.3.12 can be told to read again."},
    {"2.0", nullptr, "manager-rewrites-in-place",
     "Its own profile functions rewrite odbc.ini in place, without a lock, and drop the comments. "
     "Programs that use them at the same time can lose DSNs.",
     "Change DSNs with veltrane-dsn, which locks the file and replaces it whole."},
    {"2.0", nullptr, "manager-cuts-wide-text",
     "Its wide profile functions keep only the low byte of each character, so programs that use "
     "them read \"\xE2\x82\xAC\" and \"\xE6\x97\xA5\" as something else.",
     "Where a program shows such a value wrongly, choose one in ASCII."},
};

}  // namespace

std::string FindInstallerLibrary() {
    Dl_info info{};
    const bool isFound = dladdr(reinterpret_cast<const void*>(&SQLConfigDataSource), &info) != 0;
    if (!isFound || info.dli_fname == nullptr) return {};
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(info.dli_fname, error);
    return error ? info.dli_fname : real.string();
}

void ExamineDriverManager(Findings& io_findings) {
    const std::string library = FindInstallerLibrary();
    const std::string version = FindVersionBeside(library);
    io_findings.push_back({Severity::Note, "manager-version",
                           "The driver manager is unixODBC " +
                               (version.empty() ? "of an unknown version" : version) + ", " +
                               library + "."});
    for (const auto& [first, last, id, text, repair] : DEFECTS) {
        const bool isMended = last != nullptr && strverscmp(version.c_str(), last) > 0;
        if (isMended || strverscmp(version.c_str(), first) < 0) continue;
        io_findings.push_back({Severity::Note, id, text, repair});
    }
    if (ProbeLibrary("libiodbcinst.so.2", {}).m_fault == LibraryFault::None) {
        io_findings.push_back(
            {Severity::Note, "two-managers",
             "iODBC is installed as well. It reads the same files by other rules.",
             "Find out with ldd which of the two a program uses."});
    }
}

void ExamineEnvironment(Findings& io_findings) {
    if (const char* const search = std::getenv("ODBCSEARCH")) {
        io_findings.push_back({Severity::Warning, "environment-odbcsearch",
                               std::string("The variable ODBCSEARCH is set to ") + search +
                                   ": the driver manager then works on other files than a request "
                                   "says.",
                               "Unset it: unset ODBCSEARCH."});
    }
    for (const char* const name : {"ODBCINI", "ODBCSYSINI", "ODBCINSTINI"}) {
        const char* const value = std::getenv(name);
        if (value == nullptr) continue;
        io_findings.push_back(
            {Severity::Note, "environment-other-files",
             std::string("The variable ") + name + " is set to " + value +
                 ": programs without it use other files.",
             "Set it for all programs that should see the same DSNs, or for none."});
    }
}

}  // namespace Veltrane::Cli
