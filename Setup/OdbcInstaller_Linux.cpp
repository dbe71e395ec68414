#include <unicode/utf16.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "Exceptions/OrskaThrow.h"
#include "Setup/ConfigMode.h"
#include "Setup/HandedOutValues.h"
#include "Setup/InstallerLibrary.h"
#include "Setup/InstallerPaths.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/OdbcIniText.h"
#include "Setup/OdbcIniUpdate.h"
#include "Setup/OdbcInstaller.h"
#include "Setup/ProfileRules.h"
#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::ODBC::OdbcInstaller {

namespace {

using namespace ProfileRules;
using Rules = OdbcIniText::Rules;

/// For how long, in microseconds, a file that looks unchanged is not read again within a request.
constexpr long long SNAPSHOT_AGE = 1'000'000;
constexpr unsigned long ODBC_ERROR_REQUEST_FAILED = 11;

/// A file as it was read, so that the reads of one request need to read it once.
struct Snapshot {
    OdbcIniText m_text;
    struct stat m_stat {};
    long long m_time = -SNAPSHOT_AGE;
    bool m_isValid = false;
};

bool IsSameVersion(const struct stat& in_a, const struct stat& in_b) {
    const auto isSame = [](const timespec& in_left, const timespec& in_right) {
        return in_left.tv_sec == in_right.tv_sec && in_left.tv_nsec == in_right.tv_nsec;
    };
    return in_a.st_dev == in_b.st_dev && in_a.st_ino == in_b.st_ino &&
           in_a.st_size == in_b.st_size && isSame(in_a.st_mtim, in_b.st_mtim) &&
           isSame(in_a.st_ctim, in_b.st_ctim);
}

/// UTF-8, or nothing for text that UTF-8 cannot express.
std::optional<std::string> ToUtf8(const orska_wstring& in_text) {
    const std::u16string_view units = in_text.GetView();
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!U16_IS_SURROGATE(units[i])) continue;
        const bool isPair =
            U16_IS_LEAD(units[i]) && i + 1 < units.size() && U16_IS_TRAIL(units[i + 1]);
        if (!isPair) return std::nullopt;
        ++i;
    }
    return in_text.GetAsUtf8();
}

orska_wstring EmptyText() { return orska_wstring(std::string()); }

/// In a set-user-id program, whose user decides where the user's odbc.ini leads: what he may not
/// read or write himself is not read or written for him. The system's file is the program's matter.
class FileRights {
public:
    FileRights() : m_isChanged(IsPrivileged()) {
        if (m_isChanged && !SystemCalls::UseFileRightsOfUser()) {
            ORSKA_THROW((Orska::Support::TraceSite{"Veltrane::ODBC::OdbcInstaller::FileRights",
                                                   "Setup\\OdbcInstaller", 0}),
                        std::runtime_error("The rights of the program cannot be given up."));
        }
    }
    FileRights(const FileRights&) = delete;
    FileRights& operator=(const FileRights&) = delete;
    ~FileRights() { End(); }

    void End() {
        if (std::exchange(m_isChanged, false)) SystemCalls::UseFileRightsOfProcess();
    }

private:
    bool m_isChanged;
};

}  // namespace

struct Request::State {
    explicit State(bool in_isSystem = false)
        : m_isIodbc(IsIodbc()),
          m_mode(in_isSystem ? ConfigMode::SYSTEM : FindConfigMode()),
          m_userPath(GetUserIniPath()),
          m_systemPath(GetSystemIniPath()) {
        if (m_mode == ConfigMode::SYSTEM) m_rights.End();
    }

    FileRights m_rights;  ///< before the library looks at files to tell the mode
    bool m_isIodbc;
    /// Captured once: iODBC's own falls back to BOTH at any profile call of the host.
    ConfigMode m_mode;
    std::string m_userPath;
    std::string m_systemPath;
    Snapshot m_user;
    Snapshot m_system;
    HandedOutValues<std::string> m_values;
    State* m_outer = nullptr;
};

struct Update::State {
    explicit State(const Request::State& in_request)
        : m_isIodbc(in_request.m_isIodbc),
          m_mode(in_request.m_mode),
          m_update(PathFor(in_request),
                   m_mode == ConfigMode::SYSTEM ? NEW_SYSTEM_FILE : NEW_USER_FILE,
                   RulesOf(in_request.m_isIodbc)) {}

    /// Empty, which no update accepts, when it is not known whose file is meant.
    static std::string PathFor(const Request::State& in_request) {
        if (in_request.m_mode == ConfigMode::UNKNOWN) return {};
        return in_request.m_mode == ConfigMode::SYSTEM ? in_request.m_systemPath
                                                       : in_request.m_userPath;
    }

    bool m_isIodbc;
    ConfigMode m_mode;
    OdbcIniUpdate m_update;
};

namespace {

/// The request and the update of this thread. Set and reset by the two classes.
thread_local Request::State* t_request = nullptr;
thread_local Update::State* t_update = nullptr;

/// The running request, or one for a single operation.
class CurrentRequest {
public:
    CurrentRequest() {
        if (t_request == nullptr) m_own.emplace();
    }
    Request::State& operator*() { return m_own ? *m_own : *t_request; }
    Request::State* operator->() { return &**this; }

private:
    std::optional<Request::State> m_own;
};

bool IsCurrent(const Snapshot& in_snapshot, const std::string& in_path, long long in_time) {
    struct stat now {};
    return in_snapshot.m_isValid && in_time - in_snapshot.m_time < SNAPSHOT_AGE &&
           SystemCalls::Stat(in_path.c_str(), now, true) == 0 &&
           IsSameVersion(now, in_snapshot.m_stat);
}

/// Null when the file cannot be read or the driver manager would refuse it. A file that does not
/// exist is empty: reading makes the driver manager create it.
const OdbcIniText* ReadFile(const std::string& in_path, Rules in_rules, Snapshot& io_snapshot) {
    const long long time = SystemCalls::GetMonotonicTime();
    if (!IsCurrent(io_snapshot, in_path, time)) {
        io_snapshot = {};
        OdbcIniFile file(in_path);
        std::string bytes;
        if (file.Read(bytes, io_snapshot.m_stat)) {
            io_snapshot.m_text = OdbcIniText(std::move(bytes), in_rules);
            io_snapshot.m_time = time;
            io_snapshot.m_isValid = true;
        } else if (file.GetFailure().m_error != ENOENT) {
            TraceFileFailure(file.GetFailure());
            return nullptr;
        }
    }
    return io_snapshot.m_text.IsReadable() ? &io_snapshot.m_text : nullptr;
}

/// What an update of this thread has made of the file, else the file as it is.
const OdbcIniText* ReadProfile(Request::State& in_request, bool in_isSystem) {
    const bool isUpdated = t_update != nullptr && t_update->m_update.IsOpen() &&
                           in_isSystem == (t_update->m_mode == ConfigMode::SYSTEM);
    if (isUpdated) return &t_update->m_update.GetText();
    const Rules rules = RulesOf(in_request.m_isIodbc);
    return in_isSystem ? ReadFile(in_request.m_systemPath, rules, in_request.m_system)
                       : ReadFile(in_request.m_userPath, rules, in_request.m_user);
}

struct Lookup {
    bool m_isRead = false;  ///< false: no file could be read
    std::optional<std::string> m_value;
};

Lookup LookUpIn(const OdbcIniText* in_text, const std::string& in_section,
                const std::string& in_key) {
    if (in_text == nullptr) return {};
    return {true, in_text->Get(in_section, in_key)};
}

/// The user's file hides whole sections of the system's. A user file that may not be written does
/// not count in this mode, because the driver manager opens it for writing first.
Lookup LookUpInBoth(Request::State& in_request, const std::string& in_section,
                    const std::string& in_key) {
    const OdbcIniText* const user = SystemCalls::IsWritable(in_request.m_userPath.c_str())
                                        ? ReadProfile(in_request, false)
                                        : nullptr;
    if (user == nullptr) return LookUpIn(ReadProfile(in_request, true), in_section, in_key);
    if (user->HasSection(in_section)) return LookUpIn(user, in_section, in_key);
    const OdbcIniText* const system = ReadProfile(in_request, true);
    if (system == nullptr) return {true, std::nullopt};
    return {true, system->Get(in_section, in_key, Rules::APPENDED_FILE)};
}

/// For iODBC a value of the system's file counts where the user's file has none or an empty one.
Lookup LookUpInBothOfIodbc(Request::State& in_request, const std::string& in_section,
                           const std::string& in_key) {
    Lookup user = LookUpIn(ReadProfile(in_request, false), in_section, in_key);
    if (!user.m_value.value_or("").empty()) return user;
    Lookup system = LookUpIn(ReadProfile(in_request, true), in_section, in_key);
    return system.m_isRead ? system : user;
}

/// The path of a file that is not one of the config mode's.
std::string GetOwnPath(const orska_wstring& in_file) {
    return in_file.GetView().front() == u'/' ? ToUtf8(in_file).value_or("/") : std::string();
}

Lookup LookUp(const orska_wstring& in_file, const std::string& in_section,
              const std::string& in_key) {
    if (const std::string path = GetOwnPath(in_file); !path.empty()) {
        Snapshot snapshot;
        return LookUpIn(ReadFile(path, RulesOf(IsIodbc()), snapshot), in_section, in_key);
    }
    CurrentRequest request;
    switch (request->m_mode) {
        case ConfigMode::USER:
            return LookUpIn(ReadProfile(*request, false), in_section, in_key);
        case ConfigMode::SYSTEM:
            return LookUpIn(ReadProfile(*request, true), in_section, in_key);
        default:
            return request->m_isIodbc ? LookUpInBothOfIodbc(*request, in_section, in_key)
                                      : LookUpInBoth(*request, in_section, in_key);
    }
}

/// Does one edit in the update of this thread, or in one of its own.
template <typename Edit>
bool Edited(const Edit& in_edit) {
    if (t_update != nullptr) return in_edit(*t_update);
    Update update;
    return in_edit(*t_update) && update.Commit();
}

/// The bytes of the profile for a text that this request has read; null for a new one.
const std::string* FindStored(const orska_wstring& in_key, const orska_wstring& in_value) {
    return t_request == nullptr ? nullptr : t_request->m_values.Find(in_key, in_value);
}

bool RemoveFrom(Update::State& io_state, const std::string& in_dsn) {
    // unixODBC does not find a system file that does not exist. iODBC makes it.
    if (!io_state.m_isIodbc && io_state.m_mode == ConfigMode::SYSTEM &&
        io_state.m_update.IsNewFile()) {
        return io_state.m_update.Refuse("does not exist");
    }
    const bool isUnlisted = !IsListed(io_state.m_isIodbc, in_dsn) ||
                            io_state.m_update.RemoveKey(LIST_OF_DATA_SOURCES, in_dsn);
    return isUnlisted && io_state.m_update.RemoveSection(in_dsn);
}

bool StartIn(Update::State& io_state, const std::string& in_dsn, const std::string& in_driver) {
    const bool isListed = !IsListed(io_state.m_isIodbc, in_dsn) ||
                          io_state.m_update.Set(LIST_OF_DATA_SOURCES, in_dsn, in_driver);
    return isListed && io_state.m_update.StartSection(in_dsn) &&
           io_state.m_update.Set(in_dsn, "Driver", in_driver);
}

/// Removes a section without a key, and a key without a value.
bool Remove(OdbcIniUpdate& io_update, const std::string& in_section,
            const std::optional<std::string>& in_key) {
    return in_key ? io_update.RemoveKey(in_section, *in_key) : io_update.RemoveSection(in_section);
}

}  // namespace

Request::Request(bool in_isSystem) : m_state(std::make_unique<State>(in_isSystem)) {
    ClearInstallerErrors();
    m_state->m_outer = t_request;
    t_request = m_state.get();
}

Request::~Request() { t_request = m_state->m_outer; }

const char* Request::GetModeName() const noexcept {
    switch (m_state->m_mode) {
        case ConfigMode::BOTH:
            return "both";
        case ConfigMode::USER:
            return "user";
        case ConfigMode::SYSTEM:
            return "system";
        case ConfigMode::UNKNOWN:
            break;
    }
    return "unknown";
}

Update::Update() {
    if (t_update != nullptr) return;
    CurrentRequest request;
    m_state = std::make_unique<State>(*request);
    t_update = m_state.get();
}

Update::~Update() {
    if (m_state == nullptr) return;
    Commit();
    t_update = nullptr;
}

bool Update::Commit() noexcept {
    if (m_state == nullptr) return true;
    try {
        const bool isDone = m_state->m_update.Commit();
        if (isDone) ForgetReadValues();
        return isDone;
    } catch (...) {
        return false;
    }
}

bool ValidDSN(const orska_wstring& in_name) {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (!library.IsLoaded()) return false;
    const std::optional<std::string> name = ToUtf8(in_name);
    if (!name || !OdbcIniLine::IsCarriableSection(*name)) return false;
    if (HasReplacementCharacter(in_name) || IsReservedName(*name)) return false;
    if (IsIodbc() && !OdbcIniLine::IsCarriableLine(*name, "", Rules::IODBC)) {
        return false;  // it is a key too, in the list of data sources
    }
    return library.m_validDSN(name->c_str()) != 0;
}

int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file) {
    out_value = EmptyText();
    const std::optional<std::string> section = ToUtf8(in_section);
    const std::optional<std::string> key = ToUtf8(in_key);
    if (in_bufferSize < 2 || in_file.IsEmpty()) return -1;
    const Lookup lookup = section && key ? LookUp(in_file, *section, *key) : Lookup{true, {}};
    if (!lookup.m_isRead) return -1;
    orska_wstring value = in_default;
    if (lookup.m_value) value.SetFromUtf8(*lookup.m_value);
    out_value = CutToBuffer(std::move(value), in_bufferSize);
    if (lookup.m_value && t_request != nullptr) {
        t_request->m_values.Remember(in_key, out_value, *lookup.m_value);
    }
    return out_value.GetLength();
}

bool IsAsRead(const orska_wstring& in_key, const orska_wstring& in_value) {
    return FindStored(in_key, in_value) != nullptr;
}

bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    const std::optional<std::string> driver = ToUtf8(in_driver);
    if (!ValidDSN(in_dsn) || !driver || driver->empty()) return false;
    const Rules rules = RulesOf(IsIodbc());
    return !HasReplacementCharacter(in_driver) &&
           OdbcIniLine::IsCarriableLine("Driver", *driver, rules) &&
           (rules != Rules::IODBC ||
            OdbcIniLine::IsCarriableLine(in_dsn.GetAsUtf8(), *driver, rules));
}

bool IsWritableValue(const orska_wstring& in_key, const orska_wstring& in_value) {
    const std::optional<std::string> key = ToUtf8(in_key);
    const std::optional<std::string> value = ToUtf8(in_value);
    return IsAsRead(in_key, in_value) ||
           (key && value && OdbcIniLine::IsCarriableLine(*key, *value, RulesOf(IsIodbc())));
}

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    const std::optional<std::string> section = ToUtf8(in_section);
    const std::optional<std::string> key = ToUtf8(in_key);
    const std::optional<std::string> value = ToUtf8(in_value);
    if (!section || section->empty() || !key || !value || in_file.IsEmpty()) return false;
    const bool isRemoval = in_key.IsNull() || in_value.IsNull();
    const auto optionalKey = in_key.IsNull() ? std::nullopt : key;
    if (const std::string path = GetOwnPath(in_file); !path.empty()) {
        OdbcIniUpdate update(path, NEW_USER_FILE, RulesOf(IsIodbc()));
        return (isRemoval ? Remove(update, *section, optionalKey)
                          : update.Set(*section, *key, *value)) &&
               update.Commit();
    }
    const std::string* const stored = FindStored(in_key, in_value);
    return Edited([&](Update::State& io_state) {
        if (isRemoval) return Remove(io_state.m_update, *section, optionalKey);
        return stored != nullptr ? io_state.m_update.SetAsRead(*section, *key, *stored)
                                 : io_state.m_update.Set(*section, *key, *value);
    });
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    if (!IsWritableDSN(in_dsn, in_driver)) return false;
    const std::string dsn = in_dsn.GetAsUtf8();
    const std::string driver = in_driver.GetAsUtf8();
    return Edited([&](Update::State& io_state) { return StartIn(io_state, dsn, driver); });
}

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    const std::optional<std::string> dsn = ToUtf8(in_dsn);
    if (!dsn || dsn->empty()) return false;
    if (t_update != nullptr) return RemoveFrom(*t_update, *dsn);
    std::optional<Update> update(std::in_place);
    if (RemoveFrom(*t_update, *dsn) && update->Commit()) return true;
    const std::string reason = t_update->m_update.GetFailure().Describe();
    // Its end may make the library forget what it has read, and with that the errors.
    update.reset();
    // Nobody posts an error for a removal that fails; the installer's own function would have.
    PostInstallerError(ODBC_ERROR_REQUEST_FAILED, orska_wstring(reason));
    return false;
}

bool PostInstallerError(unsigned long in_code, const orska_wstring& in_text) {
    return PostError(static_cast<unsigned>(in_code), in_text.GetAsUtf8());
}

}  // namespace Veltrane::ODBC::OdbcInstaller
