#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <odbcinst.h>

#include <atomic>
#include <optional>
#include <string>
#include <utility>

#include "Setup/HandedOutValues.h"
#include "Setup/OdbcInstaller.h"
#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::ODBC::OdbcInstaller {

namespace {

constexpr wchar_t LIBRARY_NAME[] = L"odbccp32.dll";
constexpr wchar_t NOT_INSTALLED[] =
    L"The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.";
constexpr wchar_t NOT_INSTALLED_TITLE[] = L"ODBC Installer Error";

/// The installer's functions, bound by name. Null if the function or the library is missing.
struct InstallerFunctions {
    decltype(&SQLValidDSNW) m_validDSN = nullptr;
    decltype(&SQLGetPrivateProfileStringW) m_getProfileString = nullptr;
    decltype(&SQLWritePrivateProfileStringW) m_writeProfileString = nullptr;
    decltype(&SQLWriteDSNToIniW) m_writeDSNToIni = nullptr;
    decltype(&SQLRemoveDSNFromIniW) m_removeDSNFromIni = nullptr;
    decltype(&SQLPostInstallerErrorW) m_postInstallerError = nullptr;
    decltype(&SQLGetConfigMode) m_getConfigMode = nullptr;
    decltype(&SQLSetConfigMode) m_setConfigMode = nullptr;
    bool m_isLoaded = false;
};

template <typename Function>
void Bind(HMODULE in_library, const char* in_name, Function& out_function) {
    out_function =
        reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(in_library, in_name)));
}

/// Returns the library that is already loaded, usually our caller, else the one in the system
/// folder, but never one from the current folder or the path. Never unloaded.
HMODULE LoadInstaller() {
    HMODULE library = nullptr;
    if (GetModuleHandleExW(0, LIBRARY_NAME, &library) != 0) return library;
    return LoadLibraryExW(LIBRARY_NAME, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
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
    Bind(library, "SQLSetConfigMode", functions.m_setConfigMode);
    functions.m_isLoaded = true;
    return functions;
}

/// Loads the library at the first call. If that fails, shows one message.
const InstallerFunctions& GetInstaller() {
    // Process-wide: set on first use, never changed.
    static const InstallerFunctions s_installer = Load();
    // Process-wide: set when the message is shown. Set before the box opens, because other windows
    // of the program keep working meanwhile and can call this function.
    static std::atomic<bool> s_isUserTold{false};
    if (!s_installer.m_isLoaded && !s_isUserTold.exchange(true)) {
        MessageBoxW(nullptr, NOT_INSTALLED, NOT_INSTALLED_TITLE, MB_OK | MB_ICONERROR);
    }
    return s_installer;
}

/// False for text with a NUL: the installer would read only the part before it.
bool IsWhole(const orska_wstring& in_text) {
    return in_text.GetView().find(u'\0') == std::u16string_view::npos;
}

/// Whether the text contains U+FFFD, which replaces bytes that are not UTF-8 and would make
/// different names equal.
bool HasReplacementCharacter(const orska_wstring& in_text) {
    return in_text.GetView().find(u'\uFFFD') != std::u16string_view::npos;
}

/// A key or a value to write; null means remove.
class Optional {
public:
    explicit Optional(const orska_wstring& in_text)
        : m_text(in_text.GetAsPlatformWString()), m_isNull(in_text.IsNull()) {}
    const wchar_t* Get() const noexcept { return m_isNull ? nullptr : m_text.c_str(); }

private:
    std::wstring m_text;
    bool m_isNull;
};

/// Reads a whole value from the installer, which truncates to the buffer, or returns nothing if the
/// buffer is too small.
/// @return false when the call fails
bool ReadWhole(const InstallerFunctions& in_installer, const orska_wstring& in_section,
               const orska_wstring& in_key, const orska_wstring& in_default,
               const orska_wstring& in_file, std::wstring& out_value) {
    constexpr std::size_t FIRST_SIZE = 1 << 15;
    constexpr std::size_t LARGEST_SIZE = 1 << 24;
    for (std::size_t size = FIRST_SIZE;; size *= 2) {
        out_value.assign(size, L'\0');
        const int count = in_installer.m_getProfileString(
            in_section.GetAsPlatformWString().c_str(), in_key.GetAsPlatformWString().c_str(),
            in_default.GetAsPlatformWString().c_str(), out_value.data(), static_cast<int>(size),
            in_file.GetAsPlatformWString().c_str());
        out_value.back() = L'\0';
        out_value.resize(std::char_traits<wchar_t>::length(out_value.c_str()));
        if (out_value.size() + 1 < size || size == LARGEST_SIZE) return count >= 0;
    }
}

/// Returns the registry root under which the installer writes data sources.
HKEY WrittenRoot() {
    const InstallerFunctions& installer = GetInstaller();
    UWORD mode = ODBC_BOTH_DSN;
    if (installer.m_getConfigMode != nullptr) installer.m_getConfigMode(&mode);
    return mode == ODBC_SYSTEM_DSN ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

std::wstring PathOf(const orska_wstring& in_section) {
    return L"Software\\ODBC\\ODBC.INI\\" + in_section.GetAsPlatformWString();
}

/// Returns the unexpanded text of a value with variables (REG_EXPAND_SZ); nothing for other types.
/// The installer ignores the type: it can return the text expanded, and writes plain text.
std::optional<orska_wstring> FindExpandable(const orska_wstring& in_section,
                                            const orska_wstring& in_key) {
    const HKEY root = WrittenRoot();
    const std::wstring path = PathOf(in_section);
    const std::wstring key = in_key.GetAsPlatformWString();
    std::wstring text;
    DWORD size = 0;
    const auto get = [&](wchar_t* out_text) {
        return RegGetValueW(root, path.c_str(), key.c_str(), RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND,
                            nullptr, out_text, &size);
    };
    LONG error = get(nullptr);
    while (error == ERROR_MORE_DATA ||
           (error == ERROR_SUCCESS && text.size() * sizeof(wchar_t) < size)) {
        text.assign(size / sizeof(wchar_t) + 1, L'\0');
        error = get(text.data());
    }
    if (error != ERROR_SUCCESS) return std::nullopt;
    return orska_wstring(text.c_str());
}

/// Restores the type REG_EXPAND_SZ of a value that the installer has written.
bool SetExpandable(const orska_wstring& in_section, const orska_wstring& in_key,
                   const orska_wstring& in_value) {
    const std::wstring text = in_value.GetAsPlatformWString();
    return RegSetKeyValueW(WrittenRoot(), PathOf(in_section).c_str(),
                           in_key.GetAsPlatformWString().c_str(), REG_EXPAND_SZ, text.c_str(),
                           static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
}

}  // namespace

/// A value as the profile stores it.
struct StoredValue {
    orska_wstring m_text;
    bool m_isExpandable = false;
};

struct Request::State {
    explicit State(bool in_isSystem) {
        const InstallerFunctions& installer = GetInstaller();
        if (!in_isSystem || installer.m_setConfigMode == nullptr) return;
        if (installer.m_getConfigMode == nullptr || !installer.m_getConfigMode(&m_mode)) return;
        m_isModeSet = m_mode != ODBC_SYSTEM_DSN && installer.m_setConfigMode(ODBC_SYSTEM_DSN) != 0;
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (m_isModeSet) GetInstaller().m_setConfigMode(m_mode);
    }

    /// The installer's config mode before the request changed it.
    UWORD m_mode = ODBC_BOTH_DSN;
    bool m_isModeSet = false;
    HandedOutValues<StoredValue> m_values;
    State* m_outer = nullptr;
};

/// Empty: the installer writes each value at once.
struct Update::State {};

namespace {

/// The request of this thread. Set and reset by the class.
thread_local Request::State* t_request = nullptr;

/// Returns the stored value of a text that this request has read; null for a new text.
const StoredValue* FindStored(const orska_wstring& in_key, const orska_wstring& in_value) {
    return t_request == nullptr ? nullptr : t_request->m_values.Find(in_key, in_value);
}

}  // namespace

Request::Request(bool in_isSystem) : m_state(std::make_unique<State>(in_isSystem)) {
    m_state->m_outer = t_request;
    t_request = m_state.get();
}

Request::~Request() { t_request = m_state->m_outer; }

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
    // Some installers accept the empty name, which stands for all data sources.
    if (in_name.IsEmpty() || HasReplacementCharacter(in_name)) return false;
    if (IsReservedName(in_name.GetAsUtf8())) return false;
    return installer.m_validDSN(in_name.GetAsPlatformWString().c_str()) != 0;
}

int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file) {
    const InstallerFunctions& installer = GetInstaller();
    out_value = orska_wstring(L"");
    if (installer.m_getProfileString == nullptr || in_bufferSize < 2) return -1;
    std::wstring value;
    const bool isRead = ReadWhole(installer, in_section, in_key, in_default, in_file, value);
    StoredValue stored{orska_wstring(value.data(), value.size())};
    out_value = CutToBuffer(stored.m_text, in_bufferSize);
    if (!isRead) return -1;
    if (t_request != nullptr) {
        if (std::optional<orska_wstring> expandable = FindExpandable(in_section, in_key)) {
            stored = {std::move(*expandable), true};
        }
        t_request->m_values.Remember(in_key, out_value, std::move(stored));
    }
    return out_value.GetLength();
}

bool IsAsRead(const orska_wstring& in_key, const orska_wstring& in_value) {
    return FindStored(in_key, in_value) != nullptr;
}

bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    return !in_dsn.IsEmpty() && IsWhole(in_dsn) && !in_driver.IsEmpty() && IsWhole(in_driver) &&
           !HasReplacementCharacter(in_driver);
}

bool IsWritableValue(const orska_wstring& /*in_key*/, const orska_wstring& in_value) {
    return IsWhole(in_value);
}

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_writeProfileString == nullptr || in_section.IsEmpty()) return false;
    if (!IsWhole(in_section) || !IsWhole(in_key) || !IsWhole(in_value)) return false;
    const StoredValue* const stored = FindStored(in_key, in_value);
    const orska_wstring& value = stored != nullptr ? stored->m_text : in_value;
    const bool isExpandable = !value.IsNull() && ((stored != nullptr && stored->m_isExpandable) ||
                                                  FindExpandable(in_section, in_key));
    const bool isWritten = installer.m_writeProfileString(
                               in_section.GetAsPlatformWString().c_str(), Optional(in_key).Get(),
                               Optional(value).Get(), in_file.GetAsPlatformWString().c_str()) != 0;
    return isWritten && (!isExpandable || SetExpandable(in_section, in_key, value));
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_writeDSNToIni == nullptr || !IsWritableDSN(in_dsn, in_driver)) return false;
    return installer.m_writeDSNToIni(in_dsn.GetAsPlatformWString().c_str(),
                                     in_driver.GetAsPlatformWString().c_str()) != 0;
}

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    const InstallerFunctions& installer = GetInstaller();
    if (installer.m_removeDSNFromIni == nullptr) return false;
    // With an empty name an installer can remove everything.
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
