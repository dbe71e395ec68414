/// System functions for tests, with one body for each system.
#ifndef TESTS_SUPPORT_TESTSYSTEM_H
#define TESTS_SUPPORT_TESTSYSTEM_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Orska::Test {

/// Sets a variable of this process's environment, or removes it for null. On Windows an empty value
/// removes it too.
void SetVariable(const char* in_name, const char* in_value);

/// The variable that names the directory for temporary files.
extern const char* const TEMPORARY_DIRECTORY_VARIABLE;

/// Values of that variable, null for none, and the directory that is then used.
std::vector<std::pair<const char*, std::string>> GetTemporaryDirectories();
/// The longest path that it may have, of a directory that need not exist.
extern const std::string LONGEST_TEMPORARY_DIRECTORY;
/// Whether a path that begins with "/" is absolute.
extern const bool IS_SLASH_ABSOLUTE;

/// The directory of the running program, with the system's separator at its end.
std::string GetProgramDirectory();

/// The system's number of the calling thread.
unsigned GetThreadId();

/// Whether a process that ended with this status was ended by abort().
bool IsAborted(int in_status);

/// Calls the function with 0, 1, ... in as many copies of this process at once. They end without
/// the C library's clean-up, as a killed process does. Windows cannot copy a process, so it calls
/// it with 0 in this one.
/// @return how many have ended normally
int RunInProcesses(int in_count, const std::function<void(int)>& in_function);

/// The names of a locale.
struct TestLocale {
    const char* m_linux;  ///< language, "." and charset
    const char* m_windows;
};
constexpr TestLocale GERMAN = {"de_DE.UTF-8", "German"};  ///< has a comma for a decimal point
constexpr TestLocale TURKISH = {"tr_TR.UTF-8", "Turkish"};
/// @param in_scratch  a directory for files that it needs; it has to outlive the locale
/// @return whether the C library now follows the locale; the caller sets "C" again
bool SetLocale(const TestLocale& in_locale, const std::filesystem::path& in_scratch);

/// The system's numbers of failures that tests provoke.
struct SystemErrors {
    std::uint32_t m_noSuchFile;
    std::uint32_t m_noSuchDirectory;
    std::uint32_t m_notADirectory;
    std::uint32_t m_accessDenied;
    std::uint32_t m_noText;  ///< from the call that returns the text of a number
};
extern const SystemErrors SYSTEM_ERRORS;

/// True if another open of the file can lock a byte now, shared with other readers or exclusively.
bool IsByteFree(const std::string& in_path, std::uint32_t in_offset, bool in_isShared = false);

}  // namespace Orska::Test

#endif
