#include "tools/WindowsApi.h"
// Behind the Windows API, which it needs.
#include <odbcinst.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <unordered_map>

#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/OdbcIniText.h"
#include "Setup/OdbcInstaller.h"
#include "Setup/Profile.h"
#include "VeltraneDialog/WideText_Windows.h"
#include "VeltraneDialog/Wipe.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {

namespace {

using Kind = Profile::Kind;
using KeyValues = std::vector<ProfileView::KeyValue>;
using Orska::Support::DescribeSystemError;
using Orska::Support::EqualsIgnoringCase;
using Orska::Support::orska_wstring;

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
        : m_error(::RegOpenKeyExW(RootOf(in_kind), ToWide(in_path).c_str(), 0, in_rights, &m_key)) {
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (m_error == ERROR_SUCCESS) ::RegCloseKey(m_key);
    }
    LONG GetError() const { return m_error; }
    bool IsThere() const { return m_error != ERROR_FILE_NOT_FOUND; }
    HKEY Get() const { return m_key; }

private:
    HKEY m_key = nullptr;
    LONG m_error;
};

[[noreturn]] void FailToRead(const std::string& in_name, LONG in_error) {
    throw ProfileError(in_name + ": cannot read: " + Describe(in_error));
}

/// Takes texts and numbers; what is neither stays in the registry as it is.
/// @return ERROR_NO_MORE_ITEMS behind the last one
LONG ReadValue(HKEY in_key, DWORD in_index, KeyValues& io_section) {
    std::wstring name(MAX_NAME, L'\0');
    DWORD nameLength = MAX_NAME;
    DWORD type = REG_NONE;
    DWORD size = 0;
    LONG error =
        ::RegEnumValueW(in_key, in_index, name.data(), &nameLength, nullptr, &type, nullptr, &size);
    if (error != ERROR_SUCCESS) return error;
    name.resize(nameLength);
    std::wstring value(size / sizeof(wchar_t) + 1, L'\0');
    const WipeAtEnd wipe(value);
    error = ::RegQueryValueExW(in_key, name.c_str(), nullptr, &type,
                               reinterpret_cast<BYTE*>(value.data()), &size);
    if (error != ERROR_SUCCESS) return error;
    if (type == REG_DWORD && size == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, value.data(), sizeof number);
        io_section.emplace_back(ToUtf8(name), std::to_string(number));
    } else if (type == REG_SZ || type == REG_EXPAND_SZ) {
        // Ended by one NUL, by none, or by more than one: all have been seen.
        const std::size_t length = std::min(value.find(L'\0'), size / sizeof(wchar_t));
        io_section.emplace_back(ToUtf8(name), ToUtf8(value.substr(0, length)));
    }
    return ERROR_SUCCESS;
}

/// Nothing when there is no such section. No name leads to a key below one.
std::optional<KeyValues> ReadSection(Kind in_kind, const std::string& in_section) {
    if (in_section.empty() || in_section.find('\\') != std::string::npos) return std::nullopt;
    for (;;) {
        const Key key(in_kind, PathOf(in_kind) + "\\" + in_section, KEY_READ);
        if (!key.IsThere()) return std::nullopt;
        LONG error = key.GetError();
        KeyValues section;
        for (DWORD i = 0; error == ERROR_SUCCESS; ++i) error = ReadValue(key.Get(), i, section);
        if (error == ERROR_NO_MORE_ITEMS) return section;
        // Removed while it was read; it may be there again.
        if (error != ERROR_KEY_DELETED) FailToRead(NameOf(in_kind) + "\\" + in_section, error);
    }
}

/// The installer writes the path of the driver's library into a new data source. The driver's name
/// is in its list.
void NameDriver(Kind in_kind, const std::string& in_section, KeyValues& io_section) {
    for (auto& [key, value] : io_section) {
        if (!EqualsIgnoringCase(key, "Driver") || value.find('\\') == std::string::npos) continue;
        wchar_t name[MAX_PATH];
        DWORD size = sizeof name;
        const std::wstring list = ToWide(PathOf(in_kind) + "\\ODBC Data Sources");
        if (::RegGetValueW(RootOf(in_kind), list.c_str(), ToWide(in_section).c_str(), RRF_RT_REG_SZ,
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
            ::RegEnumKeyExW(key.Get(), i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_NO_MORE_ITEMS) return names;
        if (error != ERROR_SUCCESS) FailToRead(NameOf(in_kind), error);
        std::string text = ToUtf8({name.data(), length});
        if (OdbcIniText::IsCarriableSection(text)) names.push_back(std::move(text));
    }
}

/// What a run holds while it changes the profile, which has no lock of its own. One for the data
/// sources of a user in a session, one of all sessions for what is the system's.
class Lock {
public:
    Lock(Kind in_kind, const std::string& in_place)
        : m_mutex(::CreateMutexW(nullptr, FALSE,
                                 in_kind == Kind::USER_DATA_SOURCES
                                     ? L"Local\\veltrane-dsn-change"
                                     : L"Global\\veltrane-dsn-change")) {
        if (m_mutex == nullptr) Fail(in_place, "cannot lock", ::GetLastError());
        const DWORD result = ::WaitForSingleObject(m_mutex, LOCK_TIMEOUT);
        // One that was abandoned is of a run that was killed.
        if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) return;
        ::CloseHandle(m_mutex);
        Fail(in_place, "in use by another run", WAIT_TIMEOUT);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() {
        ::ReleaseMutex(m_mutex);
        ::CloseHandle(m_mutex);
    }

private:
    [[noreturn]] static void Fail(const std::string& in_place, const char* in_operation,
                                  DWORD in_error) {
        throw ProfileError(in_place + ": " + in_operation + ": " + DescribeSystemError(in_error));
    }

    HANDLE m_mutex;
};

/// In the order in which the edits are made.
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
    const HMODULE library = ::GetModuleHandleW(L"odbccp32.dll");
    return library == nullptr ? nullptr
                              : reinterpret_cast<Function*>(
                                    reinterpret_cast<void*>(::GetProcAddress(library, in_name)));
}

/// The first error of the installer's last call.
std::string InstallerError() {
    const auto ask = FindInInstaller<decltype(::SQLInstallerErrorW)>("SQLInstallerErrorW");
    DWORD code = 0;
    wchar_t text[SQL_MAX_MESSAGE_LENGTH + 1] = L"";
    WORD length = 0;
    const bool isThere =
        ask != nullptr &&
        SQL_SUCCEEDED(ask(1, &code, text, static_cast<WORD>(std::size(text)), &length));
    return isThere ? std::to_string(code) + ": " + ToUtf8(text) : "the installer gave no reason";
}

/// What the installer does for data sources.
bool DoByInstaller(const Edit& in_edit, Kind in_kind) {
    // Before each: some installers forget the mode at any call of theirs.
    const auto setMode = FindInInstaller<decltype(::SQLSetConfigMode)>("SQLSetConfigMode");
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

/// Drivers: the installer's functions count uses and copy files, which is not wanted here.
LONG DoInRegistry(const Edit& in_edit, Kind in_kind) {
    const std::wstring path = ToWide(PathOf(in_kind) + "\\" + in_edit.m_section);
    const std::wstring key = ToWide(in_edit.m_key);
    LONG error = ERROR_INVALID_PARAMETER;
    if (in_edit.m_section.empty()) return error;  // ODBC's key itself, with everybody's drivers
    if (in_edit.m_step == Step::SET) {
        const std::wstring value = ToWide(in_edit.m_value);
        error = ::RegSetKeyValueW(RootOf(in_kind), path.c_str(), key.c_str(), REG_SZ, value.c_str(),
                                  static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    } else if (in_edit.m_step == Step::REMOVE_KEY) {
        error = ::RegDeleteKeyValueW(RootOf(in_kind), path.c_str(), key.c_str());
    } else if (in_edit.m_step == Step::REMOVE_SECTION) {
        error = ::RegDeleteTreeW(RootOf(in_kind), path.c_str());
    }
    return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
}

/// @return why it failed; empty when it is done
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

/// Sections are read when they are asked for, once.
struct ProfileView::State {
    explicit State(Kind in_kind) : m_kind(in_kind), m_names(ReadNames(in_kind)) {}

    const std::optional<KeyValues>& Find(std::string_view in_section) const {
        const auto [section, isNew] = m_sections.try_emplace(Orska::Support::FoldCase(in_section));
        if (!isNew) return section->second;
        section->second = ReadSection(m_kind, std::string(in_section));
        if (m_kind != Kind::DRIVERS && section->second) {
            NameDriver(m_kind, std::string(in_section), *section->second);
        }
        return section->second;
    }

    Kind m_kind;
    std::vector<std::string> m_names;
    mutable std::unordered_map<std::string, std::optional<KeyValues>> m_sections;
};

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
    return m_state->Find(in_section).value_or(KeyValues());
}

std::optional<std::string> ProfileView::Get(std::string_view in_section,
                                            std::string_view in_key) const {
    for (const auto& [key, value] : m_state->Find(in_section).value_or(KeyValues())) {
        if (EqualsIgnoringCase(key, in_key)) return value;
    }
    return std::nullopt;
}

/// Values of the registry have any length.
bool ProfileView::HasLongLine(std::string_view) const { return false; }

/// Sections are read one after the other, so two readings are never certain to be the same.
bool ProfileView::IsSame(const ProfileView&) const { return false; }

struct ProfileChange::State {
    ProfileView m_view;
    Kind m_kind;
    std::vector<Edit> m_edits;
};

const ProfileView& ProfileChange::GetView() const { return m_state.m_view; }

void ProfileChange::AddDataSource(const std::string& in_name, const std::string& in_driver) {
    m_state.m_edits.push_back({Step::ADD, in_name, {}, in_driver});
    // Over the path of the driver's library, which the installer writes.
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
    const Lock lock(m_kind, m_path);
    ProfileChange::State state{Read(), m_kind, {}};
    ProfileChange change(state);
    in_plan(change);
    // What a data source cannot do without is its first key. Written last, it is what one lacks
    // that a killed run has left, and doctor names that.
    if (m_kind != Kind::DRIVERS) std::reverse(state.m_edits.begin(), state.m_edits.end());
    return DoAll(state.m_edits, m_kind);
}

std::string Profile::WhyNotWritable() const {
    // The deepest key that is there decides whether others may be made in it.
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
