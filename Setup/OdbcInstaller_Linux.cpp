#include <unicode/utf16.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "Setup/ConfigMode.h"
#include "Setup/HandedOutValues.h"
#include "Setup/InstallerLibrary.h"
#include "Setup/InstallerPaths.h"
#include "Setup/OdbcIniText.h"
#include "Setup/OdbcIniUpdate.h"
#include "Setup/OdbcInstaller.h"
#include "Setup/ProfileReader.h"
#include "Setup/ProfileRules.h"
#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::ODBC::OdbcInstaller {

namespace {

using namespace ProfileRules;
using Rules = OdbcIniText::Rules;

constexpr unsigned long ODBC_ERROR_REQUEST_FAILED = 11;

/// Whether a text contains U+FFFD, which replaces bytes that are not UTF-8 and would make different
/// names equal.
bool HasReplacementCharacter(std::string_view in_utf8) {
    return in_utf8.find("\uFFFD") != std::string_view::npos;
}

bool HasUnpairedSurrogate(std::u16string_view in_units) {
    for (std::size_t i = 0; i < in_units.size(); ++i) {
        if (!U16_IS_SURROGATE(in_units[i])) continue;
        const bool isPair =
            U16_IS_LEAD(in_units[i]) && i + 1 < in_units.size() && U16_IS_TRAIL(in_units[i + 1]);
        if (!isPair) return true;
        ++i;
    }
    return false;
}

/// A text in UTF-8; false for text with unpaired surrogates. A request converts many short texts,
/// so short ASCII text stays on the stack.
class Utf8 {
public:
    explicit Utf8(const orska_wstring& in_text);
    Utf8(const Utf8&) = delete;
    Utf8& operator=(const Utf8&) = delete;

    explicit operator bool() const noexcept { return m_isWhole; }
    std::string_view operator*() const noexcept { return m_text; }
    const std::string_view* operator->() const noexcept { return &m_text; }
    /// NUL-terminated.
    const char* GetCString() const noexcept { return m_text.data(); }

private:
    char m_short[64];
    std::string m_long;
    std::string_view m_text;
    bool m_isWhole = true;
};

Utf8::Utf8(const orska_wstring& in_text) {
    const std::u16string_view units = in_text.GetView();
    if (units.size() < sizeof m_short && Orska::Support::NarrowText(units, 0x7F, m_short)) {
        m_text = {m_short, units.size()};
        m_short[units.size()] = '\0';
        return;
    }
    m_long = in_text.GetAsUtf8();
    m_text = m_long;
    // An unpaired surrogate becomes U+FFFD, but the text can contain U+FFFD itself.
    m_isWhole = !HasReplacementCharacter(m_text) || !HasUnpairedSurrogate(units);
}

/// In a set-user-id program the user decides where the user's odbc.ini leads, so that file is read
/// and written with the user's rights. The system's file is used with the program's rights.
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
        : m_mode(in_isSystem ? ConfigMode::SYSTEM : FindConfigMode()), m_reader(m_mode) {
        if (m_mode == ConfigMode::SYSTEM) m_rights.End();
    }

    FileRights m_rights;  ///< set before the library opens files to find the mode
    /// Determined once: iODBC resets its mode to BOTH at any profile call of the host.
    ConfigMode m_mode;
    ProfileReader m_reader;
    HandedOutValues<std::string> m_values;
    std::string m_validName;  ///< the last one that was accepted
    State* m_outer = nullptr;
};

struct Update::State {
    /// The path is empty if the mode is unknown, and every update then fails.
    State(ConfigMode in_mode, const std::string& in_path)
        : m_isMissingRefused(in_mode == ConfigMode::SYSTEM && !IsIodbc()),
          m_update(in_mode == ConfigMode::UNKNOWN ? std::string() : in_path,
                   in_mode == ConfigMode::SYSTEM ? NEW_SYSTEM_FILE : NEW_USER_FILE,
                   RulesOf(IsIodbc())) {}

    /// unixODBC refuses a removal from a missing system file. iODBC creates the file.
    bool m_isMissingRefused;
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
    Request::State* operator->() { return m_own ? &*m_own : t_request; }

private:
    std::optional<Request::State> m_own;
};

/// Returns an absolute path; empty for the files of the config mode.
std::string GetOwnPath(const orska_wstring& in_file) {
    if (in_file.GetView().front() != u'/') return {};
    const Utf8 path(in_file);
    return path ? std::string(*path) : "/";
}

ProfileReader::Found Find(const orska_wstring& in_file, std::string_view in_section,
                          std::string_view in_key) {
    if (const std::string path = GetOwnPath(in_file); !path.empty()) {
        return FindIn(OdbcIniSnapshot(path).Read(), in_section, in_key);
    }
    CurrentRequest request;
    return request->m_reader.Find(t_update == nullptr ? nullptr : &t_update->m_update, in_section,
                                  in_key);
}

/// Makes one edit in the update of this thread, or in a new one.
template <typename Edit>
bool Edited(const Edit& in_edit) {
    if (t_update != nullptr) return in_edit(*t_update);
    Update update;
    return in_edit(*t_update) && update.Commit();
}

/// Whether a data source can have this name.
bool IsValidName(const Utf8& in_name) {
    if (!in_name || in_name->empty()) return false;
    if (t_request != nullptr && t_request->m_validName == *in_name) return true;
    if (!OdbcIniLine::IsCarriableSection(*in_name) || IsReservedName(*in_name) ||
        HasReplacementCharacter(*in_name)) {
        return false;
    }
    // For iODBC it is also a key, in the list of data sources.
    if (IsIodbc() && !OdbcIniLine::IsCarriableLine(*in_name, "", Rules::IODBC)) return false;
    const InstallerLibrary& library = GetInstallerLibrary();
    const SystemCalls::ForkLock lock;
    if (!library.IsLoaded() || library.m_validDSN(in_name.GetCString()) == 0) return false;
    if (t_request != nullptr) t_request->m_validName = *in_name;
    return true;
}

/// Whether a data source of this name and driver can be written.
bool IsWritableSource(const Utf8& in_dsn, const Utf8& in_driver) {
    return IsValidName(in_dsn) && in_driver && !in_driver->empty() &&
           !HasReplacementCharacter(*in_driver) && CanHold(RulesOf(IsIodbc()), *in_dsn, *in_driver);
}

/// Returns the stored bytes of a text that this request has read; null for a new text.
const std::string* FindStored(const orska_wstring& in_key, const orska_wstring& in_value) {
    return t_request == nullptr ? nullptr : t_request->m_values.Find(in_key, in_value);
}

constexpr OdbcIniUpdate::Edit ADD_DATA_SOURCE = [](OdbcIniText& io_text, std::string_view in_dsn,
                                                   std::string_view in_driver, auto) {
    AddDataSource(io_text, in_dsn, in_driver);
};
constexpr OdbcIniUpdate::Edit REMOVE_DATA_SOURCE = [](OdbcIniText& io_text, std::string_view in_dsn,
                                                      auto...) {
    RemoveDataSource(io_text, in_dsn);
};
constexpr OdbcIniUpdate::Edit REMOVE_SECTION = [](OdbcIniText& io_text, std::string_view in_section,
                                                  auto...) { io_text.RemoveSection(in_section); };
constexpr OdbcIniUpdate::Edit REMOVE_KEY = [](OdbcIniText& io_text, std::string_view in_section,
                                              std::string_view in_key,
                                              auto) { io_text.RemoveKey(in_section, in_key); };

bool RemoveFrom(Update::State& io_state, std::string_view in_dsn) {
    if (io_state.m_isMissingRefused && io_state.m_update.IsNewFile()) {
        return io_state.m_update.Refuse("does not exist");
    }
    return io_state.m_update.Do(REMOVE_DATA_SOURCE, in_dsn);
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
    m_state = std::make_unique<State>(request->m_mode, request->m_reader.GetWrittenPath());
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

bool ValidDSN(const orska_wstring& in_name) { return IsValidName(Utf8(in_name)); }

int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file) {
    const Utf8 section(in_section);
    const Utf8 key(in_key);
    const bool isUsable = in_bufferSize >= 2 && !in_file.IsEmpty();
    const auto [isRead, stored] = isUsable && section && key ? Find(in_file, *section, *key)
                                                             : ProfileReader::Found{isUsable, {}};
    if (!isRead) {
        out_value = orska_wstring(std::string());
        return -1;
    }
    orska_wstring value;
    stored ? value.SetFromUtf8(*stored) : value = in_default;
    out_value = CutToBuffer(std::move(value), in_bufferSize);
    if (stored && t_request != nullptr) t_request->m_values.Remember(in_key, out_value, *stored);
    return out_value.GetLength();
}

bool IsAsRead(const orska_wstring& in_key, const orska_wstring& in_value) {
    return FindStored(in_key, in_value) != nullptr;
}

bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    return IsWritableSource(Utf8(in_dsn), Utf8(in_driver));
}

bool IsWritableValue(const orska_wstring& in_key, const orska_wstring& in_value) {
    if (IsAsRead(in_key, in_value)) return true;
    const Utf8 key(in_key);
    const Utf8 value(in_value);
    return key && value && OdbcIniLine::IsCarriableLine(*key, *value, RulesOf(IsIodbc()));
}

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    const Utf8 section(in_section);
    const Utf8 key(in_key);
    const Utf8 value(in_value);
    if (!section || section->empty() || !key || !value || in_file.IsEmpty()) return false;
    const std::string* const stored = FindStored(in_key, in_value);
    const auto write = [&](OdbcIniUpdate& io_update) {
        if (in_key.IsNull()) return io_update.Do(REMOVE_SECTION, *section);
        if (in_value.IsNull()) return io_update.Do(REMOVE_KEY, *section, *key);
        return stored != nullptr ? io_update.SetAsRead(*section, *key, *stored)
                                 : io_update.Set(*section, *key, *value);
    };
    if (const std::string path = GetOwnPath(in_file); !path.empty()) {
        OdbcIniUpdate update(path, NEW_USER_FILE, RulesOf(IsIodbc()));
        return write(update) && update.Commit();
    }
    return Edited([&](Update::State& io_state) { return write(io_state.m_update); });
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    const Utf8 dsn(in_dsn);
    const Utf8 driver(in_driver);
    return IsWritableSource(dsn, driver) && Edited([&](Update::State& io_state) {
               return io_state.m_update.Do(ADD_DATA_SOURCE, *dsn, *driver);
           });
}

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    const Utf8 dsn(in_dsn);
    if (!dsn || dsn->empty()) return false;
    if (t_update != nullptr) return RemoveFrom(*t_update, *dsn);
    std::optional<Update> update(std::in_place);
    if (RemoveFrom(*t_update, *dsn) && update->Commit()) return true;
    const std::string reason = t_update->m_update.GetFailure().Describe();
    // Ending the update can empty the library's cache, and with it the list of errors.
    update.reset();
    // The caller posts no error for a failed removal; the installer's own function would have.
    PostInstallerError(ODBC_ERROR_REQUEST_FAILED, orska_wstring(reason));
    return false;
}

bool PostInstallerError(unsigned long in_code, const orska_wstring& in_text) {
    return PostError(static_cast<unsigned>(in_code), in_text.GetAsUtf8());
}

}  // namespace Veltrane::ODBC::OdbcInstaller
