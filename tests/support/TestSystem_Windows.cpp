#include <clocale>
#include <cstdlib>

#include "tests/support/TestSystem.h"
#include "tools/WindowsApi.h"

namespace Orska::Test {

void SetVariable(const char* in_name, const char* in_value) {
    _putenv_s(in_name, in_value == nullptr ? "" : in_value);
}

const char* const TEMPORARY_DIRECTORY_VARIABLE = "TMP";

std::vector<std::pair<const char*, std::string>> GetTemporaryDirectories() {
    return {{"C:\\somewhere", "C:\\somewhere\\"}, {"C:/some where/", "C:\\some where\\"}};
}
const std::string LONGEST_TEMPORARY_DIRECTORY = "C:\\" + std::string(255, 'x');
const bool IS_SLASH_ABSOLUTE = false;

std::string GetProgramDirectory() {
    char file[MAX_PATH];
    const std::string path(file, GetModuleFileNameA(nullptr, file, MAX_PATH));
    return path.substr(0, path.rfind('\\') + 1);
}

unsigned GetThreadId() { return GetCurrentThreadId(); }

bool IsAborted(int in_status) {
    constexpr int STATUS_OF_ABORT = 3;
    return in_status == STATUS_OF_ABORT;
}

int RunInProcesses(int /*in_count*/, const std::function<void(int)>& in_function) {
    in_function(0);
    return 1;
}

bool SetLocale(const TestLocale& in_locale, const std::filesystem::path& /*in_scratch*/) {
    return std::setlocale(LC_ALL, in_locale.m_windows) != nullptr;
}

const SystemErrors SYSTEM_ERRORS = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND,
                                    ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED,
                                    ERROR_MR_MID_NOT_FOUND};

bool IsByteFree(const std::string& in_path, std::uint32_t in_offset, bool in_isShared) {
    const HANDLE handle =
        CreateFileA(in_path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    OVERLAPPED start = {};
    start.Offset = in_offset;
    const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (in_isShared ? 0 : LOCKFILE_EXCLUSIVE_LOCK);
    const BOOL isFree = LockFileEx(handle, flags, 0, 1, 0, &start);
    CloseHandle(handle);
    return isFree != FALSE;
}

}  // namespace Orska::Test
