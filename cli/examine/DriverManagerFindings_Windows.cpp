#include <windows.h>

#include <string>
#include <vector>

#include "VeltraneDialog/WideText.h"
#include "cli/examine/Findings.h"

namespace Veltrane::Cli {

namespace {

/// Reads the file's version resource; empty if it has none.
std::string ReadFileVersion(const std::wstring& in_path) {
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(in_path.c_str(), &ignored);
    std::vector<char> data(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    const bool isRead =
        size != 0 && GetFileVersionInfoW(in_path.c_str(), 0, size, data.data()) != FALSE &&
        VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &length) != FALSE;
    if (!isRead || info == nullptr) return {};
    std::string version;
    for (const DWORD part : {info->dwFileVersionMS, info->dwFileVersionLS}) {
        version += (version.empty() ? "" : ".") + std::to_string(HIWORD(part)) + "." +
                   std::to_string(LOWORD(part));
    }
    return version;
}

}  // namespace

std::string FindInstallerLibrary() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(GetModuleHandleW(L"odbccp32.dll"), path.data(), MAX_PATH));
    return ODBC::ToUtf8(path);
}

void ExamineDriverManager(Findings& io_findings) {
    const std::string library = FindInstallerLibrary();
    const std::string version = ReadFileVersion(ODBC::ToWide(library));
    io_findings.push_back({Severity::Note, "manager-version",
                           "The ODBC installer is " + library + ", " +
                               (version.empty() ? "of an unknown version" : version) + "."});
}

/// No variable sends the installer to other keys.
void ExamineEnvironment(Findings&) {}

}  // namespace Veltrane::Cli
