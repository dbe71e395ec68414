#include "PlatformAbstraction/settings/OrskaSettingReader.h"

#include <algorithm>
#include <mutex>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/base/Environment.h"
#include "PlatformAbstraction/base/VerboseTrace.h"
#include "PlatformAbstraction/base/orska_abort.h"
#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "PlatformAbstraction/settings/ISettingListener.h"
#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"
#include "PlatformAbstraction/settings/RegistryConfigurationReader.h"
#include "PlatformAbstraction/settings/SettingKeys.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tools/NoCancellation.h"

namespace Orska::Support {

using Platform::TraceVerbose;

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\OrskaSettingReader_Windows";

// Process-wide: guards the reader. Recursive, because listeners run while it is held.
std::recursive_mutex s_lock;

using Guard = std::lock_guard<std::recursive_mutex>;

std::string EnsureTrailingSeparator(std::string in_path) {
    if (!in_path.empty() && (in_path.back() == '/' || in_path.back() == '\\')) {
        in_path.back() = '\\';
        return in_path;
    }
    return in_path.empty() ? in_path : in_path + '\\';
}

}  // namespace

OrskaSettingReader* OrskaSettingReader::s_instance = nullptr;

void OrskaSettingReader::Initialize(const orska_wstring& in_iniFilePath,
                                    const orska_wstring& in_registryKeyName,
                                    const orska_wstring& in_section) {
    const Guard guard(s_lock);
    if (s_instance == nullptr) {
        s_instance = new OrskaSettingReader(in_iniFilePath, in_registryKeyName, in_section);
    }
}

void OrskaSettingReader::Initialize(const orska_wstring& in_registryKeyName,
                                    const orska_wstring& in_section) {
    Initialize(orska_wstring(L""), in_registryKeyName, in_section);
}

OrskaSettingReader& OrskaSettingReader::Get() {
    if (s_instance == nullptr) {
        orska_abort(SOURCE, 0, "OrskaSettingReader::Initialize has not been called.");
    }
    return *s_instance;
}

// The table.

void OrskaSettingReader::Load() {
    if (m_isLoaded || m_isLoading) {
        return;
    }
    const NoCancellation noCancellation;  // callers that drop exceptions would swallow one
    const struct Loading {
        bool& m_flag;
        explicit Loading(bool& io_flag) : m_flag(io_flag) { m_flag = true; }
        ~Loading() { m_flag = false; }
    } loading(m_isLoading);

    SectionMap section;
    const IniFileConfigurationReader iniReader(false, m_resolveIniPathFromModule);
    if (!iniReader.LoadConfiguration(section, m_iniFilePath, m_section)) {
        const RegistryConfigurationReader registryReader(false);
        registryReader.LoadConfiguration(section, orska_wstring(L""),
                                         orska_wstring(L"SOFTWARE\\") + m_registryKeyName,
                                         &m_section, false);
    }
    const EncodingType encoding = GetByteTextEncoding();
    for (const auto& [key, value] : section) {
        // Keys are looked up by the bytes of ASCII names.
        Store(key.GetAsUtf8(), value.GetAsText().GetAsAnsiString(encoding));
    }
    m_isLoaded = true;
}

std::string& OrskaSettingReader::FindOrAdd(std::string_view in_key) {
    auto found = m_settings.find(in_key);
    if (found == m_settings.end()) {
        found = m_settings.emplace(in_key, std::string()).first;
    }
    return found->second;
}

/// A missing key is added with an empty value, without a call to its listeners.
const std::string& OrskaSettingReader::Read(std::string_view in_key) {
    Load();
    return FindOrAdd(in_key);
}

void OrskaSettingReader::Store(std::string_view in_key, const std::string& in_value) {
    std::string& value = FindOrAdd(in_key);
    if (value != in_value) {
        Notify(in_key, value, in_value);
        value = in_value;
    }
}

/// A listener may register and unregister others, and itself. Those registered at the start are
/// called in order, except those unregistered before their turn.
void OrskaSettingReader::Notify(std::string_view in_key, const std::string& in_oldValue,
                                const std::string& in_newValue) {
    const auto found = m_listeners.find(in_key);
    if (found == m_listeners.end()) {
        return;
    }
    const std::string key(in_key);
    const std::vector<ISettingListener*> listeners = found->second;
    for (ISettingListener* listener : listeners) {
        if (IsListening(listener, key)) {
            listener->OnSettingChanged(key, in_oldValue, in_newValue);
        }
    }
}

bool OrskaSettingReader::IsListening(ISettingListener* in_listener, std::string_view in_key) const {
    const auto found = m_listeners.find(in_key);
    return found != m_listeners.end() && std::find(found->second.begin(), found->second.end(),
                                                   in_listener) != found->second.end();
}

/// Also empty when there is no reader or the sources cannot be read.
std::string OrskaSettingReader::ReadOrEmpty(std::string_view in_key) noexcept try {
    const Guard guard(s_lock);
    return s_instance == nullptr ? std::string() : s_instance->Read(in_key);
} catch (...) {
    return {};
}

std::string OrskaSettingReader::GetSetting(const std::string& in_key) {
    const Guard guard(s_lock);
    return Get().Read(in_key);
}

void OrskaSettingReader::SetSetting(const std::string& in_key, const std::string& in_value) {
    const Guard guard(s_lock);
    Get().Store(in_key, in_value);
}

// Listeners and sources.

void OrskaSettingReader::RegisterListener(ISettingListener* in_listener,
                                          const std::string& in_key) {
    const Guard guard(s_lock);
    OrskaSettingReader& reader = Get();
    if (reader.IsListening(in_listener, in_key)) {
        orska_abort(SOURCE, 656, "Attempted to register same <Listener, Key> combination twice.");
    }
    reader.m_listeners[in_key].push_back(in_listener);
}

void OrskaSettingReader::UnregisterListener(ISettingListener* in_listener,
                                            const std::string& in_key) {
    const Guard guard(s_lock);
    OrskaSettingReader& reader = Get();
    const auto found = reader.m_listeners.find(in_key);
    if (found == reader.m_listeners.end()) {
        orska_abort(SOURCE, 673,
                    "Attempted to unregister <Listener, Key> combination which wasn't registered. "
                    "(No listeners on that key)");
    }
    std::vector<ISettingListener*>& listeners = found->second;
    const auto listener = std::find(listeners.begin(), listeners.end(), in_listener);
    if (listener == listeners.end()) {
        orska_abort(SOURCE, 681,
                    "Attempted to unregister <Listener, Key> combination which wasn't registered.");
    }
    // This changes the order of the others, on purpose. An empty list stays, so that a second
    // removal is told from one of a key that never had a listener.
    std::swap(*listener, listeners.back());
    listeners.pop_back();
}

const orska_wstring& OrskaSettingReader::GetIniFilePath() {
    const Guard guard(s_lock);
    return Get().m_iniFilePath;
}

const orska_wstring& OrskaSettingReader::GetRegistryKeyName() {
    const Guard guard(s_lock);
    return Get().m_registryKeyName;
}

void OrskaSettingReader::SetSource(orska_wstring OrskaSettingReader::*in_source,
                                   const orska_wstring& in_value) {
    const Guard guard(s_lock);
    OrskaSettingReader& reader = Get();
    reader.*in_source = in_value;
    if (reader.m_changeObserver != nullptr) {
        reader.m_changeObserver->OnSettingSourceChanged();
    }
}

void OrskaSettingReader::SetIniFilePath(const orska_wstring& in_path) {
    SetSource(&OrskaSettingReader::m_iniFilePath, in_path);
}

void OrskaSettingReader::SetRegistryKeyName(const orska_wstring& in_name) {
    SetSource(&OrskaSettingReader::m_registryKeyName, in_name);
}

void OrskaSettingReader::SetChangeObserver(ISettingChangeObserver* in_observer) {
    const Guard guard(s_lock);
    Get().m_changeObserver = in_observer;
}

void OrskaSettingReader::SetResolveIniPathFromModule(bool in_resolve) {
    const Guard guard(s_lock);
    Get().m_resolveIniPathFromModule = in_resolve;
}

// The two encodings.

EncodingType OrskaSettingReader::GetAppCharEncoding() {
    TraceVerbose("OrskaSettingReader::GetAppCharEncoding()");
    // Read even if the variable overrides it: once the encoding is set, the sources' bytes would
    // mean something else.
    const std::string setting = ReadOrEmpty(SETTING_ANSI_ENCODING);
    const std::string name = GetEnvironment(ENVIRONMENT_ANSI_ENCODING).value_or(setting);
    if (name.empty()) {
        return EncodingType::ENC_NONE;
    }
    if (name == "UTF-16") {
        return EncodingType::ENC_UTF16LE;
    }
    if (name == "UTF-32") {
        return EncodingType::ENC_UTF32LE;
    }
    try {
        return ICUUtils::GetEncodingEnum(name);
    } catch (...) {
        TraceVerbose("ANSIEncoding setting is not a legal encoding.");
        ORSKA_THROW(
            (TraceSite{"Orska::Support::OrskaSettingReader::GetAppCharEncoding", SOURCE, 236}),
            StartupInitException("ANSIEncoding setting is not a legal encoding."));
    }
}

/// Accepts only three Unicode forms, by their exact names; the application's encoding can be any.
EncodingType OrskaSettingReader::GetDriverManagerEncoding() {
    TraceVerbose("OrskaSettingReader::GetDriverManagerEncoding()");
    const std::string name = ReadOrEmpty(SETTING_DRIVER_MANAGER_ENCODING);
    if (name.empty()) {
        TraceVerbose("DriverManagerEncoding setting not loaded, using default: UTF-16_LE.");
        return EncodingType::ENC_UTF16LE;
    }
    if (name == "UTF-8") {
        return EncodingType::ENC_UTF8;
    }
    if (name == "UTF-16") {
        return EncodingType::ENC_UTF16LE;
    }
    if (name == "UTF-32") {
        return EncodingType::ENC_UTF32LE;
    }
    TraceVerbose("DriverManagerEncoding setting is not a legal encoding.");
    ORSKA_THROW(
        (TraceSite{"Orska::Support::OrskaSettingReader::GetDriverManagerEncoding", SOURCE, 186}),
        StartupInitException("DriverManagerEncoding setting is not a legal encoding."));
}

// The accessors.

std::string OrskaSettingReader::GetConfigErrorMessagesPath() {
    return EnsureTrailingSeparator(GetSetting(SETTING_CONFIG_ERROR_MESSAGES_PATH));
}

std::string OrskaSettingReader::GetErrorMessagesPath(const std::string& in_defaultDirectory) {
    const std::string value = GetSetting(SETTING_ERROR_MESSAGES_PATH);
    if (value.empty()) {
        return EnsureTrailingSeparator(in_defaultDirectory);
    }
    // As UTF-8, whatever the current encoding is: only ASCII characters decide.
    if (FileSystemUtils::IsJoinedToDirectory(orska_wstring().SetFromUtf8(value))) {
        return EnsureTrailingSeparator(EnsureTrailingSeparator(in_defaultDirectory) + value);
    }
    return EnsureTrailingSeparator(value);
}

std::string OrskaSettingReader::GetLogPath() {
    const std::string value = GetSetting(SETTING_LOG_PATH);
    return EnsureTrailingSeparator(value.empty() ? "." : value);
}

std::string OrskaSettingReader::GetSwapFilePath() {
    std::string value = GetSetting(SETTING_SWAP_FILE_PATH);
    if (value.empty()) {
        const orska_wstring directory = FileSystemUtils::GetTempDirectory();
        value = directory.IsNull() ? "." : directory.GetAsAnsiString(GetByteTextEncoding());
    }
    return EnsureTrailingSeparator(std::move(value));
}

std::string OrskaSettingReader::GetDriverLocale() {
    const Guard guard(s_lock);
    Get();
    std::string value = ReadOrEmpty(SETTING_DRIVER_LOCALE);
    return value.empty() ? "en-US" : value;
}

std::optional<std::string> OrskaSettingReader::GetODBCInstLib() {
    std::string value = GetSetting(SETTING_ODBC_INST_LIB);
    return value.empty() ? std::nullopt : std::optional(std::move(value));
}

bool OrskaSettingReader::GetTraceToStdErr() { return GetSetting(SETTING_TRACE_TO_STD_ERR) == "1"; }

#define ORSKA_GETTER(NAME, KEY) \
    std::string OrskaSettingReader::Get##NAME() { return GetSetting(SETTING_##KEY); }
#define ORSKA_SETTER(NAME, KEY)                                       \
    void OrskaSettingReader::Set##NAME(const std::string& in_value) { \
        SetSetting(SETTING_##KEY, in_value);                          \
    }

ORSKA_GETTER(EncryptSwapFile, ENCRYPT_SWAP_FILE)
ORSKA_GETTER(LogFileCount, LOG_FILE_COUNT)
ORSKA_GETTER(LogFileSize, LOG_FILE_SIZE)
ORSKA_GETTER(LogLevel, LOG_LEVEL)
ORSKA_GETTER(LogNamespace, LOG_NAMESPACE)
ORSKA_GETTER(LogType, LOG_TYPE)
ORSKA_GETTER(MemoryManagerMemoryLimit, MEMORY_MANAGER_MEMORY_LIMIT)
ORSKA_GETTER(MemoryManagerStrategy, MEMORY_MANAGER_STRATEGY)
ORSKA_GETTER(MemoryManagerSwapDiskLimit, MEMORY_MANAGER_SWAP_DISK_LIMIT)
ORSKA_GETTER(MemoryManagerThresholdPercent, MEMORY_MANAGER_THRESHOLD_PERCENT)
ORSKA_GETTER(ServiceName, SERVICE_NAME)

ORSKA_SETTER(DriverLocale, DRIVER_LOCALE)
ORSKA_SETTER(ErrorMessagesPath, ERROR_MESSAGES_PATH)
ORSKA_SETTER(LogFileCount, LOG_FILE_COUNT)
ORSKA_SETTER(LogFileSize, LOG_FILE_SIZE)
ORSKA_SETTER(LogLevel, LOG_LEVEL)
ORSKA_SETTER(LogNamespace, LOG_NAMESPACE)
ORSKA_SETTER(LogPath, LOG_PATH)
ORSKA_SETTER(LogType, LOG_TYPE)
ORSKA_SETTER(ODBCInstLib, ODBC_INST_LIB)
ORSKA_SETTER(ServiceName, SERVICE_NAME)
ORSKA_SETTER(SwapFilePath, SWAP_FILE_PATH)

}  // namespace Orska::Support
