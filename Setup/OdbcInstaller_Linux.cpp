#include <unicode/utf16.h>

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

/// Returns UTF-8; nothing for text with unpaired surrogates.
std::optional<std::string> ToUtf8(const orska_wstring& in_text) {
    std::string utf8 = in_text.GetAsUtf8();
    // A byte for each unit: it is all ASCII.
    if (utf8.size() == in_text.GetView().size()) return utf8;
    // An unpaired surrogate becomes U+FFFD, but the text can contain U+FFFD itself.
    if (utf8.find("\uFFFD") == std::string::npos) return utf8;
    const std::u16string_view units = in_text.GetView();
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!U16_IS_SURROGATE(units[i])) continue;
        const bool isPair =
            U16_IS_LEAD(units[i]) && i + 1 < units.size() && U16_IS_TRAIL(units[i + 1]);
        if (!isPair) return std::nullopt;
        ++i;
    }
    return utf8;
}

orska_wstring EmptyText() { return orska_wstring(std::string()); }

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
    return in_file.GetView().front() == u'/' ? ToUtf8(in_file).value_or("/") : std::string();
}

ProfileReader::Found Find(const orska_wstring& in_file, const std::string& in_section,
                          const std::string& in_key) {
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

/// Returns the stored bytes of a text that this request has read; null for a new text.
const std::string* FindStored(const orska_wstring& in_key, const orska_wstring& in_value) {
    return t_request == nullptr ? nullptr : t_request->m_values.Find(in_key, in_value);
}

bool RemoveFrom(Update::State& io_state, const std::string& in_dsn) {
    if (io_state.m_isMissingRefused && io_state.m_update.IsNewFile()) {
        return io_state.m_update.Refuse("does not exist");
    }
    return io_state.m_update.Do([=](OdbcIniText& io_text) { RemoveDataSource(io_text, in_dsn); });
}

/// Removes a key, or the section if no key is given.
bool Remove(OdbcIniUpdate& io_update, const std::string& in_section,
            const std::optional<std::string>& in_key) {
    return io_update.Do([=](OdbcIniText& io_text) {
        in_key ? io_text.RemoveKey(in_section, *in_key) : io_text.RemoveSection(in_section);
    });
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

bool ValidDSN(const orska_wstring& in_name) {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (!library.IsLoaded()) return false;
    const std::optional<std::string> name = ToUtf8(in_name);
    if (!name || !OdbcIniLine::IsCarriableSection(*name)) return false;
    if (HasReplacementCharacter(in_name) || IsReservedName(*name)) return false;
    if (IsIodbc() && !OdbcIniLine::IsCarriableLine(*name, "", Rules::IODBC)) {
        return false;  // also a key, in the list of data sources
    }
    const SystemCalls::ForkLock lock;
    return library.m_validDSN(name->c_str()) != 0;
}

int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file) {
    out_value = EmptyText();
    const std::optional<std::string> section = ToUtf8(in_section);
    const std::optional<std::string> key = ToUtf8(in_key);
    if (in_bufferSize < 2 || in_file.IsEmpty()) return -1;
    const auto [isRead, stored] =
        section && key ? Find(in_file, *section, *key) : ProfileReader::Found{true, {}};
    if (!isRead) return -1;
    orska_wstring value = in_default;
    if (stored) value.SetFromUtf8(*stored);
    out_value = CutToBuffer(std::move(value), in_bufferSize);
    if (stored && t_request != nullptr) t_request->m_values.Remember(in_key, out_value, *stored);
    return out_value.GetLength();
}

bool IsAsRead(const orska_wstring& in_key, const orska_wstring& in_value) {
    return FindStored(in_key, in_value) != nullptr;
}

bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    const std::optional<std::string> driver = ToUtf8(in_driver);
    return ValidDSN(in_dsn) && driver && !driver->empty() && !HasReplacementCharacter(in_driver) &&
           CanHold(RulesOf(IsIodbc()), in_dsn.GetAsUtf8(), *driver);
}

bool IsWritableValue(const orska_wstring& in_key, const orska_wstring& in_value) {
    if (IsAsRead(in_key, in_value)) return true;
    const std::optional<std::string> key = ToUtf8(in_key);
    const std::optional<std::string> value = ToUtf8(in_value);
    return key && value && OdbcIniLine::IsCarriableLine(*key, *value, RulesOf(IsIodbc()));
}

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    const std::optional<std::string> section = ToUtf8(in_section);
    const std::optional<std::string> key = ToUtf8(in_key);
    const std::optional<std::string> value = ToUtf8(in_value);
    if (!section || section->empty() || !key || !value || in_file.IsEmpty()) return false;
    const bool isRemoval = in_key.IsNull() || in_value.IsNull();
    const auto remove = [&](OdbcIniUpdate& io_update) {
        return Remove(io_update, *section, in_key.IsNull() ? std::nullopt : key);
    };
    if (const std::string path = GetOwnPath(in_file); !path.empty()) {
        OdbcIniUpdate update(path, NEW_USER_FILE, RulesOf(IsIodbc()));
        return (isRemoval ? remove(update) : update.Set(*section, *key, *value)) && update.Commit();
    }
    const std::string* const stored = FindStored(in_key, in_value);
    return Edited([&](Update::State& io_state) {
        OdbcIniUpdate& update = io_state.m_update;
        if (isRemoval) return remove(update);
        return stored != nullptr ? update.SetAsRead(*section, *key, *stored)
                                 : update.Set(*section, *key, *value);
    });
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    if (!IsWritableDSN(in_dsn, in_driver)) return false;
    return Edited([dsn = in_dsn.GetAsUtf8(), driver = in_driver.GetAsUtf8()](auto& io_state) {
        return io_state.m_update.Do([=](auto& io_text) { AddDataSource(io_text, dsn, driver); });
    });
}

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    const std::optional<std::string> dsn = ToUtf8(in_dsn);
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
