/// The process's driver settings: one table from key to text, which the first read fills from an
/// INI file or, failing that, from the registry.
///
/// Created by the first Initialize and never destroyed; read once and never reloaded. Every
/// operation but the two encoding accessors holds one process-wide recursive lock while it runs;
/// listeners are called with it held. The first read (any accessor or GetSetting) throws what
/// loading throws: ProductException "IniParseError" or "RegKeyNotFound"; the next read then tries
/// the sources again. Without a call to Initialize the encoding accessors act as if nothing were
/// set, and every other operation stops the process through orska_abort.
///
/// Keys and values are bytes. Those of the sources are in GetByteTextEncoding as it was when they
/// were loaded: UTF-8 where the platform was started after Initialize.
#ifndef PLATFORMABSTRACTION_ORSKASETTINGREADER_H
#define PLATFORMABSTRACTION_ORSKASETTINGREADER_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "../base/Ascii.h"
#include "../strings/EncodingType.h"
#include "../strings/orska_wstring.h"

namespace Orska::Support {

class ISettingChangeObserver;
class ISettingListener;

class OrskaSettingReader {
public:
    /// Creates the reader; a later call changes nothing. Reads nothing yet.
    /// @param in_iniFilePath      empty: no INI file is read
    /// @param in_registryKeyName  name of the key under "SOFTWARE\"
    /// @param in_section          section of the INI file, and last part of the registry key's path
    static void Initialize(const orska_wstring& in_iniFilePath,
                           const orska_wstring& in_registryKeyName,
                           const orska_wstring& in_section);
    static void Initialize(const orska_wstring& in_registryKeyName,
                           const orska_wstring& in_section);

    /// The value of a key, with its ASCII letters in any case; empty when there is none.
    static std::string GetSetting(const std::string& in_key);
    /// Stores a value. If it differs, the key's listeners are called first. Does not load.
    static void SetSetting(const std::string& in_key, const std::string& in_value);

    /// @param in_listener  not owned. Registering it twice on one key stops the process
    static void RegisterListener(ISettingListener* in_listener, const std::string& in_key);
    /// The key's last listener takes the place of the one removed. Removing one that is not there
    /// stops the process.
    static void UnregisterListener(ISettingListener* in_listener, const std::string& in_key);

    /// The sources. Changing them matters only before the first read.
    static const orska_wstring& GetIniFilePath();
    static const orska_wstring& GetRegistryKeyName();
    static void SetIniFilePath(const orska_wstring& in_path);
    static void SetRegistryKeyName(const orska_wstring& in_name);
    /// @param in_observer  not owned; null: none
    static void SetChangeObserver(ISettingChangeObserver* in_observer);
    /// True: a relative INI path starts at the directory of this library's file.
    static void SetResolveIniPathFromModule(bool in_resolve);

    /// The application's encoding of narrow text: the environment variable ORSKA_APP_ANSI_ENCODING,
    /// else the setting "ANSIENCODING"; ENC_NONE when it is empty or cannot be read.
    /// @throws StartupInitException for a name that is not an encoding
    static EncodingType GetAppCharEncoding();
    /// The encoding that the driver manager uses: UTF-8, UTF-16LE (also when unset or when the
    /// settings cannot be read) or UTF-32LE.
    /// @throws StartupInitException for any other name
    static EncodingType GetDriverManagerEncoding();

    /// Paths end in "\" on both systems unless they are empty.
    static std::string GetConfigErrorMessagesPath();
    /// A relative value is appended to the default directory; an empty value means that directory.
    static std::string GetErrorMessagesPath(const std::string& in_defaultDirectory);
    static std::string GetLogPath();       ///< ".\" when unset
    static std::string GetSwapFilePath();  ///< the system's temporary directory when unset

    /// "en-US" when unset or when the settings cannot be read.
    static std::string GetDriverLocale();
    static std::optional<std::string> GetODBCInstLib();  ///< absent when empty
    static bool GetTraceToStdErr();                      ///< true for "1" only

    /// As stored; empty when unset.
    static std::string GetEncryptSwapFile();
    static std::string GetLogFileCount();
    static std::string GetLogFileSize();
    static std::string GetLogLevel();
    static std::string GetLogNamespace();
    static std::string GetLogType();
    static std::string GetMemoryManagerMemoryLimit();
    static std::string GetMemoryManagerStrategy();
    static std::string GetMemoryManagerSwapDiskLimit();
    static std::string GetMemoryManagerThresholdPercent();
    static std::string GetServiceName();

    static void SetDriverLocale(const std::string& in_value);
    static void SetErrorMessagesPath(const std::string& in_value);
    static void SetLogFileCount(const std::string& in_value);
    static void SetLogFileSize(const std::string& in_value);
    static void SetLogLevel(const std::string& in_value);
    static void SetLogNamespace(const std::string& in_value);
    static void SetLogPath(const std::string& in_value);
    static void SetLogType(const std::string& in_value);
    static void SetODBCInstLib(const std::string& in_value);
    static void SetServiceName(const std::string& in_value);
    static void SetSwapFilePath(const std::string& in_value);

private:
    /// The order of `_stricmp`, in every locale.
    struct KeyLess {
        using is_transparent = void;
        bool operator()(std::string_view in_left, std::string_view in_right) const noexcept {
            return IsLessIgnoringCase(in_left, in_right);
        }
    };

    OrskaSettingReader(const orska_wstring& in_iniFilePath, const orska_wstring& in_registryKeyName,
                       const orska_wstring& in_section)
        : m_iniFilePath(in_iniFilePath),
          m_registryKeyName(in_registryKeyName),
          m_section(in_section) {}

    static OrskaSettingReader& Get();
    static std::string ReadOrEmpty(std::string_view in_key) noexcept;
    static void SetSource(orska_wstring OrskaSettingReader::*in_source,
                          const orska_wstring& in_value);

    void Load();
    const std::string& Read(std::string_view in_key);
    std::string& FindOrAdd(std::string_view in_key);
    void Store(std::string_view in_key, const std::string& in_value);
    void Notify(std::string_view in_key, const std::string& in_oldValue,
                const std::string& in_newValue);
    bool IsListening(ISettingListener* in_listener, std::string_view in_key) const;

    // Process-wide: set by the first Initialize, used by every operation under the lock.
    static OrskaSettingReader* s_instance;

    std::map<std::string, std::string, KeyLess> m_settings;
    orska_wstring m_iniFilePath;
    orska_wstring m_registryKeyName;
    bool m_resolveIniPathFromModule = false;
    orska_wstring m_section;
    ISettingChangeObserver* m_changeObserver = nullptr;
    std::map<std::string, std::vector<ISettingListener*>, KeyLess> m_listeners;
    bool m_isLoaded = false;
    bool m_isLoading =
        false;  ///< a listener that reads while the sources load sees the values read so far
};

}  // namespace Orska::Support

#endif
