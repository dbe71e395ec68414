#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <odbcinst.h>
#include <sddl.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <unordered_map>

#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "PlatformAbstraction/base/WindowsHandle.h"
#include "Setup/OdbcIniLine.h"
#include "Setup/OdbcInstaller.h"
#include "Setup/Profile.h"
#include "VeltraneDialog/WideText.h"
#include "VeltraneDialog/Wipe.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {

namespace {

using Kind = Profile::Kind;
using KeyValues = std::vector<ProfileView::KeyValue>;
using Orska::Support::DescribeSystemError;
using Orska::Support::EqualsIgnoringCase;
using Orska::Support::FoldCase;
using Orska::Support::orska_wstring;
using Orska::Support::WindowsHandle;

/// The longest name of a key or a value, with its NUL.
constexpr DWORD MAX_NAME = 16384;
/// The list of the drivers, in which each has the value "Installed".
constexpr char DRIVER_LIST[] = "ODBC Drivers";
constexpr DWORD LOCK_TIMEOUT = 10'000;  // milliseconds

HKEY RootOf(Kind in_kind) {
    return in_kind == Kind::USER_DATA_SOURCES ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

std::string PathOf(Kind in_kind) {
    switch (in_kind) {
        case Kind::USER_DATA_SOURCES:
            return "Software\\ODBC\\ODBC.INI";
        case Kind::SYSTEM_DATA_SOURCES:
            return "SOFTWARE\\ODBC\\ODBC.INI";
        default:
            return "SOFTWARE\\ODBC\\ODBCINST.INI";
    }
}

std::string NameOf(Kind in_kind) {
    return (RootOf(in_kind) == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER\\" : "HKEY_LOCAL_MACHINE\\") +
           PathOf(in_kind);
}

std::string Describe(LONG in_error) {
    return DescribeSystemError(static_cast<std::uint32_t>(in_error));
}

class Key {
public:
    Key(Kind in_kind, const std::string& in_path, REGSAM in_rights)
        : m_key(Orska::Support::OpenRegistryKey(RootOf(in_kind), ToWide(in_path).c_str(), in_rights,
                                                m_error)) {}
    LONG GetError() const { return m_error; }
    bool IsThere() const { return m_error != ERROR_FILE_NOT_FOUND; }
    HKEY Get() const { return m_key.Get(); }

private:
    LONG m_error;
    Orska::Support::RegistryHandle m_key;
};

[[noreturn]] void FailToRead(const std::string& in_name, LONG in_error) {
    throw ProfileError(in_name + ": cannot read: " + Describe(in_error));
}

struct Section {
    KeyValues m_texts;
    std::vector<std::string> m_others;  ///< keys of values that are neither text nor numbers
};

/// @param out_value  ends with at least one NUL
LONG QueryValue(HKEY in_key, const std::wstring& in_name, DWORD& out_type, std::wstring& out_value,
                DWORD& io_size) {
    for (;;) {
        out_value.assign(io_size / sizeof(wchar_t) + 1, L'\0');
        const LONG error = RegQueryValueExW(in_key, in_name.c_str(), nullptr, &out_type,
                                            reinterpret_cast<BYTE*>(out_value.data()), &io_size);
        // Another program can have written a longer one since it was measured.
        if (error != ERROR_MORE_DATA) return error;
        WipeBytes(out_value.data(), out_value.size() * sizeof(wchar_t));
    }
}

/// Reads texts and numbers; of other values only the key.
/// @return ERROR_NO_MORE_ITEMS after the last one
LONG ReadValue(HKEY in_key, DWORD in_index, Section& io_section) {
    std::wstring name(MAX_NAME, L'\0');
    DWORD nameLength = MAX_NAME;
    DWORD type = REG_NONE;
    DWORD size = 0;
    LONG error =
        RegEnumValueW(in_key, in_index, name.data(), &nameLength, nullptr, &type, nullptr, &size);
    if (error != ERROR_SUCCESS) return error;
    name.resize(nameLength);
    std::wstring value;
    const WipeAtEnd wipe(value);
    error = QueryValue(in_key, name, type, value, size);
    if (error != ERROR_SUCCESS) return error;
    if (type == REG_DWORD && size == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, value.data(), sizeof number);
        io_section.m_texts.emplace_back(ToUtf8(name), std::to_string(number));
    } else if (type == REG_SZ || type == REG_EXPAND_SZ) {
        // Texts in the registry end with no NUL, one or several.
        const std::size_t length = std::min(value.find(L'\0'), size / sizeof(wchar_t));
        io_section.m_texts.emplace_back(ToUtf8(name), ToUtf8(value.substr(0, length)));
    } else {
        io_section.m_others.push_back(ToUtf8(name));
    }
    return ERROR_SUCCESS;
}

/// Returns nothing when there is no such section. A name with a backslash would be a subkey.
std::optional<Section> ReadSection(Kind in_kind, const std::string& in_section) {
    if (in_section.empty() || in_section.find('\\') != std::string::npos) return std::nullopt;
    for (;;) {
        const Key key(in_kind, PathOf(in_kind) + "\\" + in_section, KEY_READ);
        if (!key.IsThere()) return std::nullopt;
        LONG error = key.GetError();
        Section section;
        for (DWORD i = 0; error == ERROR_SUCCESS; ++i) error = ReadValue(key.Get(), i, section);
        if (error == ERROR_NO_MORE_ITEMS) return section;
        // Removed during the read; it can exist again.
        if (error != ERROR_KEY_DELETED) FailToRead(NameOf(in_kind) + "\\" + in_section, error);
    }
}

/// The installer writes the path of the driver's library into a new data source. Replaces the path
/// by the driver's name from the installer's list.
void NameDriver(Kind in_kind, const std::string& in_section, KeyValues& io_section) {
    for (auto& [key, value] : io_section) {
        if (!EqualsIgnoringCase(key, "Driver") || value.find('\\') == std::string::npos) continue;
        wchar_t name[MAX_PATH];
        DWORD size = sizeof name;
        const std::wstring list = ToWide(PathOf(in_kind) + "\\ODBC Data Sources");
        if (RegGetValueW(RootOf(in_kind), list.c_str(), ToWide(in_section).c_str(), RRF_RT_REG_SZ,
                         nullptr, name, &size) == ERROR_SUCCESS) {
            value = ToUtf8(name);
        }
    }
}

std::vector<std::string> ReadNames(Kind in_kind) {
    std::vector<std::string> names;
    const Key key(in_kind, PathOf(in_kind), KEY_READ);
    if (!key.IsThere()) return names;
    if (key.GetError() != ERROR_SUCCESS) FailToRead(NameOf(in_kind), key.GetError());
    std::wstring name(MAX_NAME, L'\0');
    for (DWORD i = 0;; ++i) {
        DWORD length = MAX_NAME;
        const LONG error =
            RegEnumKeyExW(key.Get(), i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_NO_MORE_ITEMS) return names;
        if (error != ERROR_SUCCESS) FailToRead(NameOf(in_kind), error);
        std::string text = ToUtf8({name.data(), length});
        if (OdbcIniLine::IsCarriableSection(text)) names.push_back(std::move(text));
    }
}

/// Returns the SID of this process's user as text (S-1-5-21-...); empty on failure.
std::wstring FindUserSid() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return {};
    const WindowsHandle owner(token);
    struct {
        TOKEN_USER m_user;
        BYTE m_sid[SECURITY_MAX_SID_SIZE];
    } user{};
    DWORD size = 0;
    wchar_t* text = nullptr;
    if (GetTokenInformation(token, TokenUser, &user, sizeof user, &size) == FALSE ||
        ConvertSidToStringSidW(user.m_user.User.Sid, &text) == FALSE) {
        return {};
    }
    const std::wstring sid(text);
    LocalFree(text);
    return sid;
}

/// The lock of a change, because the registry has none: a mutex for the data sources of each user,
/// in all sessions, and one for the system's. Only that user, or the administrators, can open it.
class Lock {
public:
    Lock(Kind in_kind, const std::string& in_place) {
        const bool isUsers = in_kind == Kind::USER_DATA_SOURCES;
        const std::wstring user = isUsers ? FindUserSid() : std::wstring();
        const std::wstring name = L"Global\\veltrane-dsn-change" + (isUsers ? L"-" + user : L"");
        m_mutex = Create(name, isUsers ? user : L"BA");
        if (!m_mutex.IsOpen()) Fail(in_place, "cannot lock", GetLastError());
        const DWORD result = WaitForSingleObject(m_mutex.Get(), LOCK_TIMEOUT);
        // An abandoned mutex is from a killed run.
        if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) return;
        Fail(in_place, "in use by another run", WAIT_TIMEOUT);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { ReleaseMutex(m_mutex.Get()); }

private:
    [[noreturn]] static void Fail(const std::string& in_place, const char* in_operation,
                                  DWORD in_error) {
        throw ProfileError(in_place + ": " + in_operation + ": " + DescribeSystemError(in_error));
    }

    /// @param in_trustee  who can open it besides the system: a SID or its abbreviation
    static WindowsHandle Create(const std::wstring& in_name, const std::wstring& in_trustee) {
        // SYNCHRONIZE and MUTEX_MODIFY_STATE, which is also all that is requested below: a request
        // for more would be refused if the mutex exists.
        const std::wstring rights = L"D:P(A;;0x100001;;;" + in_trustee + L")(A;;0x100001;;;SY)";
        SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, FALSE};
        if (ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1,
                                                                 &attributes.lpSecurityDescriptor,
                                                                 nullptr) == FALSE) {
            return {};
        }
        WindowsHandle mutex(
            CreateMutexExW(&attributes, in_name.c_str(), 0, SYNCHRONIZE | MUTEX_MODIFY_STATE));
        const DWORD error = GetLastError();
        LocalFree(attributes.lpSecurityDescriptor);
        SetLastError(error);
        return mutex;
    }

    WindowsHandle m_mutex;
};

/// In the order in which edits are made.
enum class Step { ADD, SET, REMOVE_KEY, REMOVE_SECTION };

struct Edit {
    Step m_step;
    std::string m_section;
    std::string m_key;
    std::string m_value;
};

orska_wstring Text(const std::string& in_utf8) {
    orska_wstring text;
    text.SetFromUtf8(in_utf8);
    return text;
}

template <typename Function>
Function* FindInInstaller(const char* in_name) {
    const HMODULE library = GetModuleHandleW(L"odbccp32.dll");
    return library == nullptr ? nullptr
                              : reinterpret_cast<Function*>(
                                    reinterpret_cast<void*>(GetProcAddress(library, in_name)));
}

/// The first error of the installer's last call.
std::string InstallerError() {
    const auto ask = FindInInstaller<decltype(SQLInstallerErrorW)>("SQLInstallerErrorW");
    DWORD code = 0;
    wchar_t text[SQL_MAX_MESSAGE_LENGTH + 1] = L"";
    WORD length = 0;
    const bool isThere =
        ask != nullptr &&
        SQL_SUCCEEDED(ask(1, &code, text, static_cast<WORD>(std::size(text)), &length));
    return isThere ? std::to_string(code) + ": " + ToUtf8(text) : "the installer gave no reason";
}

/// Makes an edit of a data source with the installer's functions.
bool DoByInstaller(const Edit& in_edit, Kind in_kind) {
    // Set before each call: some installers reset the mode at every call.
    const auto setMode = FindInInstaller<decltype(SQLSetConfigMode)>("SQLSetConfigMode");
    const UWORD mode = in_kind == Kind::SYSTEM_DATA_SOURCES ? ODBC_SYSTEM_DSN : ODBC_USER_DSN;
    if (setMode == nullptr || !setMode(mode)) return false;
    const orska_wstring section = Text(in_edit.m_section);
    switch (in_edit.m_step) {
        case Step::ADD:
            return OdbcInstaller::WriteDSNToIni(section, Text(in_edit.m_value));
        case Step::SET:
            return OdbcInstaller::WritePrivateProfileString(
                section, Text(in_edit.m_key), Text(in_edit.m_value), orska_wstring(L"odbc.ini"));
        case Step::REMOVE_KEY:
            return OdbcInstaller::WritePrivateProfileString(
                section, Text(in_edit.m_key), orska_wstring(), orska_wstring(L"odbc.ini"));
        case Step::REMOVE_SECTION:
            break;
    }
    return OdbcInstaller::RemoveDSNFromIni(section);
}

/// Makes an edit of a driver in the registry: the installer's functions also count uses and copy
/// files, which is not wanted here.
LONG DoInRegistry(const Edit& in_edit, Kind in_kind) {
    const std::wstring path = ToWide(PathOf(in_kind) + "\\" + in_edit.m_section);
    const std::wstring key = ToWide(in_edit.m_key);
    LONG error = ERROR_INVALID_PARAMETER;
    if (in_edit.m_section.empty()) return error;  // ODBC's key itself, with all drivers
    if (in_edit.m_step == Step::SET) {
        const std::wstring value = ToWide(in_edit.m_value);
        error = RegSetKeyValueW(RootOf(in_kind), path.c_str(), key.c_str(), REG_SZ, value.c_str(),
                                static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    } else if (in_edit.m_step == Step::REMOVE_KEY) {
        error = RegDeleteKeyValueW(RootOf(in_kind), path.c_str(), key.c_str());
    } else if (in_edit.m_step == Step::REMOVE_SECTION) {
        error = RegDeleteTreeW(RootOf(in_kind), path.c_str());
    }
    return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
}

/// @return why it failed; empty on success
std::string Do(const Edit& in_edit, Kind in_kind) {
    if (in_kind == Kind::DRIVERS) {
        const LONG error = DoInRegistry(in_edit, in_kind);
        return error == ERROR_SUCCESS ? "" : NameOf(in_kind) + ": cannot write: " + Describe(error);
    }
    return DoByInstaller(in_edit, in_kind) ? "" : InstallerError();
}

std::vector<Profile::Failure> DoAll(const std::vector<Edit>& in_edits, Kind in_kind) {
    std::map<std::string, std::string> failures;
    for (const Step step : {Step::ADD, Step::SET, Step::REMOVE_KEY, Step::REMOVE_SECTION}) {
        for (const Edit& edit : in_edits) {
            if (edit.m_step != step || failures.contains(edit.m_section)) continue;
            std::string reason = Do(edit, in_kind);
            ORSKA_TRACE(reason.empty() ? 2 : 1, "Veltrane::ODBC::Profile::Change", "Setup\\Profile",
                        0, "%s: %s %s", edit.m_section.c_str(), edit.m_key.c_str(), reason.c_str());
            if (!reason.empty()) failures.emplace(edit.m_section, std::move(reason));
        }
    }
    std::vector<Profile::Failure> list;
    for (const auto& [section, reason] : failures) list.push_back({section, reason});
    return list;
}

}  // namespace

/// Reads each section at its first use.
struct ProfileView::State {
    explicit State(Kind in_kind) : m_kind(in_kind), m_names(ReadNames(in_kind)) {}

    const std::optional<Section>& Find(std::string_view in_section) const {
        const auto [section, isNew] = m_sections.try_emplace(FoldName(in_section));
        if (!isNew) return section->second;
        section->second = ReadSection(m_kind, std::string(in_section));
        if (m_kind != Kind::DRIVERS && section->second) {
            NameDriver(m_kind, std::string(in_section), section->second->m_texts);
        }
        return section->second;
    }

    Kind m_kind;
    std::vector<std::string> m_names;
    mutable std::unordered_map<std::string, std::optional<Section>> m_sections;
};

namespace {

bool IsAscii(std::string_view in_text) {
    return std::all_of(in_text.begin(), in_text.end(), [](char in_byte) { return in_byte >= 0; });
}

}  // namespace

std::string FoldName(std::string_view in_name) {
    std::wstring name = IsAscii(in_name) ? std::wstring() : ToWide(in_name);
    if (name.empty()) return FoldCase(in_name);
    // The system's table of upper case, which the registry and CompareStringOrdinal use too.
    const int length = static_cast<int>(name.size());
    LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, name.c_str(), length, name.data(), length,
                  nullptr, nullptr, 0);
    return FoldCase(ToUtf8(name));
}

bool IsSameName(std::string_view in_left, std::string_view in_right) {
    if (IsAscii(in_left) && IsAscii(in_right)) return EqualsIgnoringCase(in_left, in_right);
    return FoldName(in_left) == FoldName(in_right);
}

std::vector<std::string> ProfileView::GetOtherKeys(std::string_view in_section) const {
    return m_state->Find(in_section).value_or(Section()).m_others;
}

std::vector<std::string> ProfileView::GetSections() const { return m_state->m_names; }

std::vector<std::string> ProfileView::GetDrivers() const {
    std::vector<std::string> names;
    for (const auto& [name, state] : GetKeyValues(DRIVER_LIST)) {
        if (EqualsIgnoringCase(state, "Installed")) names.push_back(name);
    }
    return names;
}

bool ProfileView::HasSection(std::string_view in_section) const {
    return m_state->Find(in_section).has_value();
}

std::vector<ProfileView::KeyValue> ProfileView::GetKeyValues(std::string_view in_section) const {
    return m_state->Find(in_section).value_or(Section()).m_texts;
}

std::optional<std::string> ProfileView::Get(std::string_view in_section,
                                            std::string_view in_key) const {
    for (const auto& [key, value] : GetKeyValues(in_section)) {
        if (IsSameName(key, in_key)) return value;
    }
    return std::nullopt;
}

/// Registry values have any length.
bool ProfileView::HasLongLine(std::string_view) const { return false; }

/// Sections are read at different times, so two views are never known to be the same.
bool ProfileView::IsSame(const ProfileView&) const { return false; }

struct ProfileChange::State {
    ProfileView m_view;
    Kind m_kind;
    std::vector<Edit> m_edits;
};

const ProfileView& ProfileChange::GetView() const { return m_state.m_view; }

void ProfileChange::AddDataSource(const std::string& in_name, const std::string& in_driver) {
    m_state.m_edits.push_back({Step::ADD, in_name, {}, in_driver});
    // Overwrites the path of the driver's library, which the installer writes.
    Set(in_name, "Driver", in_driver);
}

void ProfileChange::Set(const std::string& in_section, const std::string& in_key,
                        const std::string& in_value) {
    m_state.m_edits.push_back({Step::SET, in_section, in_key, in_value});
}

void ProfileChange::RemoveKey(const std::string& in_section, const std::string& in_key) {
    m_state.m_edits.push_back({Step::REMOVE_KEY, in_section, in_key, {}});
}

void ProfileChange::RemoveSection(const std::string& in_section) {
    if (m_state.m_kind == Kind::DRIVERS) RemoveKey(DRIVER_LIST, in_section);
    m_state.m_edits.push_back({Step::REMOVE_SECTION, in_section, {}, {}});
}

void ProfileChange::ListDriver(const std::string& in_driver) {
    Set(DRIVER_LIST, in_driver, "Installed");
}

Profile::Profile(Kind in_kind) : m_kind(in_kind), m_path(NameOf(in_kind)) {}

ProfileView Profile::Read() const {
    return ProfileView(std::make_shared<const ProfileView::State>(m_kind));
}

std::vector<Profile::Failure> Profile::Change(
    const std::function<void(ProfileChange&)>& in_plan) const {
    // A user who cannot write must not hold the lock either.
    const std::string reason = WhyNotWritable();
    if (!reason.empty()) throw ProfileError(reason);
    const Lock lock(m_kind, m_path);
    ProfileChange::State state{Read(), m_kind, {}};
    ProfileChange change(state);
    in_plan(change);
    // In reverse, because a data source needs its first key most. If a killed run leaves one
    // without that key, doctor reports it.
    if (m_kind != Kind::DRIVERS) std::reverse(state.m_edits.begin(), state.m_edits.end());
    return DoAll(state.m_edits, m_kind);
}

std::string Profile::WhyNotWritable() const {
    // The deepest existing key decides whether subkeys can be created.
    std::string path = PathOf(m_kind);
    while (!path.empty()) {
        const Key key(m_kind, path, KEY_SET_VALUE | KEY_CREATE_SUB_KEY);
        if (key.IsThere()) {
            const bool isOpen = key.GetError() == ERROR_SUCCESS;
            return isOpen ? "" : m_path + ": cannot write: " + Describe(key.GetError());
        }
        path.resize(path.find('\\') == std::string::npos ? 0 : path.rfind('\\'));
    }
    return {};
}

}  // namespace Veltrane::ODBC
