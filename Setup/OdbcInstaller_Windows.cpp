#include "tools/WindowsApi.h"
// Behind the Windows API, which it needs.
#include <odbcinst.h>
#include <unicode/utf16.h>

#include <atomic>
#include <string>
#include <vector>

#include "Setup/OdbcInstaller.h"

namespace Veltrane::ODBC::OdbcInstaller {

namespace {

constexpr wchar_t LIBRARY_NAME[] = L"odbccp32.dll";
constexpr wchar_t NOT_INSTALLED[] =
    L"The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.";
constexpr wchar_t NOT_INSTALLED_TITLE[] = L"ODBC Installer Error";

/// The installer's functions, bound by name. Null where the library, or one of them, is missing.
struct InstallerFunctions {
    decltype(&::SQLValidDSNW) m_validDSN = nullptr;
    decltype(&::SQLGetPrivateProfileStringW) m_getProfileString = nullptr;
    decltype(&::SQLWritePrivateProfileStringW) m_writeProfileString = nullptr;
    decltype(&::SQLWriteDSNToIniW) m_writeDSNToIni = nullptr;
    decltype(&::SQLRemoveDSNFromIniW) m_removeDSNFromIni = nullptr;
    decltype(&::SQLPostInstallerErrorW) m_postInstallerError = nullptr;
    decltype(&::SQLGetConfigMode) m_getConfigMode = nullptr;
    bool m_isLoaded = false;
};

template <typename Function>
void Bind(HMODULE in_library, const char* in_name, Function& out_function) {
    out_function =
        reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(in_library, in_name)));
}

/// The library that called us, which is in the process already, else the system's own: never one
/// that lies in the current folder or on the path. Never unloaded.
HMODULE LoadInstaller() {
    HMODULE library = nullptr;
    if (::GetModuleHandleExW(0, LIBRARY_NAME, &library) != 0) return library;
    return ::LoadLibraryExW(LIBRARY_NAME, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}

InstallerFunctions Load() {
    InstallerFunctions functions;
    const HMODULE library = LoadInstaller();
    if (library == nullptr) return functions;
    Bind(library, "SQLValidDSNW", functions.m_validDSN);
    Bind(library, "SQLGetPrivateProfileStringW", functions.m_getProfileString);
    Bind(library, "SQLWritePrivateProfileStringW", functions.m_writeProfileString);
    Bind(library, "SQLWriteDSNToIniW", functions.m_writeDSNToIni);
    Bind(library, "SQLRemoveDSNFromIniW", functions.m_removeDSNFromIni);
    Bind(library, "SQLPostInstallerErrorW", functions.m_postInstallerError);
    Bind(library, "SQLGetConfigMode", functions.m_getConfigMode);
    functions.m_isLoaded = true;
    return functions;
}

/// Loads the library at the first call. When that fails the user is told, once.
const InstallerFunctions& GetInstaller() {
    // Process-wide: set on first use, never changed.
    static const InstallerFunctions s_installer = Load();
    // Process-wide: set when the user is told, read here. Set before the box opens, which lets the
    // program's other windows work on and may so lead back here.
    static std::atomic<bool> s_isUserTold{false};
    if (!s_installer.m_isLoaded && !s_isUserTold.exchange(true)) {
        ::MessageBoxW(nullptr, NOT_INSTALLED, NOT_INSTALLED_TITLE, MB_OK | MB_ICONERROR);
    }
    return s_installer;
}

/// Whether the installer, which takes texts up to their first NUL, would get all of it.
bool IsWhole(const orska_wstring& in_text) {
    return in_text.GetView().find(u'\0') == std::u16string_view::npos;
}

/// A key or a value to write, of which NULL says what to remove.
class Optional {
public:
    explicit Optional(const orska_wstring& in_text)
        : m_text(in_text.GetAsPlatformWString()), m_isNull(in_text.IsNull()) {}
    const wchar_t* Get() const noexcept { return m_isNull ? nullptr : m_text.c_str(); }

private:
    std::wstring m_text;
    bool m_isNull;
};

/// The text in a buffer, without the half of a character that the installer's cut may leave.
orska_wstring TextOf(const std::vector<wchar_t>& in_buffer) {
    std::size_t length = std::char_traits<wchar_t>::length(in_buffer.data());
    const bool isFull = length + 1 == in_buffer.size();
    if (isFull && length != 0 && U16_IS_LEAD(in_buffer[length - 1])) --length;
    return orska_wstring(in_buffer.data(), length);
}

}  // namespace

/// The installer keeps the config mode itself, for as long as a request runs.
struct Request::State {};

/// The installer writes each value when it is told to; nothing is collected.
struct Update::State {};

Request::Request() = default;
Request::~Request() = default;

const char* Request::GetModeName() const noexcept {
    const InstallerFunctions& installer = GetInstaller();
    UWORD mode = 0;
    if (installer.m_getConfigMode == nullptr || !installer.m_getConfigMode(&mode)) return "unknown";
    switch (mode) {
        case ODBC_BOTH_DSN:
            return "both";
        case ODBC_USER_DSN:
            return "user";
        case ODBC_SYSTEM_DSN:
            return "system";
        default:
            return "unknown";
    }
}

Update::Update() = default;
Update::~Update() = default;
bool Update::Commit() noexcept { return true; }

bool ValidDSN(const orska_wstring& in_name) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_validDSN == nullptr || !IsWhole(in_name)) return false;
    // Not every installer refuses the empty name, under which it would find all data sources.
    if (in_name.IsEmpty() || IsListOfDataSources(in_name)) return false;
    return installer.m_validDSN(in_name.GetAsPlatformWString().c_str()) != 0;
}

int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file) {
    const InstallerFunctions& installer = GetInstaller();
    out_value = orska_wstring(L"");
    if (installer.m_getProfileString == nullptr || in_bufferSize < 2) return -1;
    std::vector<wchar_t> buffer(static_cast<std::size_t>(in_bufferSize), L'\0');
    const int count = installer.m_getProfileString(
        in_section.GetAsPlatformWString().c_str(), in_key.GetAsPlatformWString().c_str(),
        in_default.GetAsPlatformWString().c_str(), buffer.data(), in_bufferSize,
        in_file.GetAsPlatformWString().c_str());
    buffer.back() = L'\0';
    out_value = TextOf(buffer);
    return count;
}

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_writeProfileString == nullptr || in_section.IsEmpty()) return false;
    if (!IsWhole(in_section) || !IsWhole(in_key) || !IsWhole(in_value)) return false;
    return installer.m_writeProfileString(in_section.GetAsPlatformWString().c_str(),
                                          Optional(in_key).Get(), Optional(in_value).Get(),
                                          in_file.GetAsPlatformWString().c_str()) != 0;
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_writeDSNToIni == nullptr) return false;
    if (in_dsn.IsEmpty() || !IsWhole(in_dsn)) return false;
    if (in_driver.IsEmpty() || !IsWhole(in_driver)) return false;
    return installer.m_writeDSNToIni(in_dsn.GetAsPlatformWString().c_str(),
                                     in_driver.GetAsPlatformWString().c_str()) != 0;
}

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_removeDSNFromIni == nullptr) return false;
    // With an empty name an installer may remove everything.
    if (in_dsn.IsEmpty() || !IsWhole(in_dsn)) return false;
    return installer.m_removeDSNFromIni(in_dsn.GetAsPlatformWString().c_str()) != 0;
}

bool PostInstallerError(unsigned long in_code, const orska_wstring& in_text) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_postInstallerError == nullptr) return false;
    return installer.m_postInstallerError(in_code, in_text.GetAsPlatformWString().c_str()) ==
           SQL_SUCCESS;
}

}  // namespace Veltrane::ODBC::OdbcInstaller
