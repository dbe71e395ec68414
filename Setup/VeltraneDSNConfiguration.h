/// The settings of one DSN while a setup request runs: parsed from the installer's attribute list,
/// checked, read from the DSN's section of odbc.ini and written back. All profile access goes
/// through OdbcInstaller. A record lives for one request and is used by one thread.
#ifndef SETUP_VELTRANEDSNCONFIGURATION_H
#define SETUP_VELTRANEDSNCONFIGURATION_H

#include <array>
#include <cstddef>
#include <vector>

#include "PlatformAbstraction/strings/orska_wstring.h"
#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::ODBC {

/// The profile file and the keys of a DSN's section; comparisons with them are exact.
extern const Orska::Support::orska_wstring DSN_CONFIG_KEY_ODBC_INI;
extern const Orska::Support::orska_wstring DSN_CONFIG_KEY_DRIVER;
/// The keys of `DIALOG_FIELDS`, in its order, and some of them by name.
extern const std::array<Orska::Support::orska_wstring, DIALOG_FIELDS.size()> DSN_CONFIG_KEYS;
extern const Orska::Support::orska_wstring& DSN_CONFIG_KEY_DSN;
extern const Orska::Support::orska_wstring& SERVER;
extern const Orska::Support::orska_wstring& COGNOS_NAMESPACE;
extern const Orska::Support::orska_wstring& MICROSTRATEGY_LOGINMODE;
extern const Orska::Support::orska_wstring& UID;
extern const Orska::Support::orska_wstring& PWD;
extern const Orska::Support::orska_wstring& DATABASE;

class VeltraneDSNConfiguration {
public:
    /// All fields start as NULL. Save writes the driver description as the key "Driver".
    explicit VeltraneDSNConfiguration(const Orska::Support::orska_wstring& in_driverDescription);

    /// Reads the known keys of the attribute list, then replaces all except the name by the stored
    /// values, truncated to 259 code units (empty where the profile has none).
    /// @param in_attributeString  key=value entries, each ended by a NUL
    /// @throws VeltraneDSNSetupException INVALID_KEYWORD_VALUE when the installer refuses the name
    void Load(const Orska::Support::orska_wstring& in_attributeString);

    /// Removes the DSN's section and writes it again without keys that the record does not know.
    /// Blank values of optional keys are not written; the record keeps the trimmed values. Values
    /// that are unchanged since Load are written as they were stored. The password is stored in
    /// clear text. Values that cannot be stored are refused before anything is changed; a later
    /// failure rolls nothing back.
    /// @throws VeltraneDSNSetupException INVALID_NAME or REQUEST_FAILED
    void Save();

    /// Returns the value of a row of `DIALOG_FIELDS`. The named getters and setters do the same.
    const Orska::Support::orska_wstring& Get(const DialogField& in_field) const noexcept {
        return m_values[IndexOf(in_field)];
    }
    /// Leaves the field unchanged when it throws.
    /// @throws VeltraneDSNSetupException REQUEST_FAILED when the installer refuses the name, or
    ///         when another required field is empty
    void Set(const DialogField& in_field, const Orska::Support::orska_wstring& in_value);

    const Orska::Support::orska_wstring& GetDsn() const noexcept {
        return m_values[FieldIndex("DSN")];
    }
    const Orska::Support::orska_wstring& GetServer() const noexcept {
        return m_values[FieldIndex("Server")];
    }
    const Orska::Support::orska_wstring& GetCognosNamespace() const noexcept {
        return m_values[FieldIndex("Namespace")];
    }
    const Orska::Support::orska_wstring& GetMicroStrategyLoginMode() const noexcept {
        return m_values[FieldIndex("LoginMode")];
    }
    const Orska::Support::orska_wstring& GetUid() const noexcept {
        return m_values[FieldIndex("UID")];
    }
    const Orska::Support::orska_wstring& GetPwd() const noexcept {
        return m_values[FieldIndex("PWD")];
    }
    const Orska::Support::orska_wstring& GetDatabase() const noexcept {
        return m_values[FieldIndex("Database")];
    }

    void SetDsn(const Orska::Support::orska_wstring& in_dsn) {
        Set(DIALOG_FIELDS[FieldIndex("DSN")], in_dsn);
    }
    void SetServer(const Orska::Support::orska_wstring& in_server) {
        Set(DIALOG_FIELDS[FieldIndex("Server")], in_server);
    }
    void SetCognosNamespace(const Orska::Support::orska_wstring& in_cognos_namespace) {
        Set(DIALOG_FIELDS[FieldIndex("Namespace")], in_cognos_namespace);
    }
    void SetMicroStrategyLoginMode(
        const Orska::Support::orska_wstring& in_microstrategy_loginmode) {
        Set(DIALOG_FIELDS[FieldIndex("LoginMode")], in_microstrategy_loginmode);
    }
    void SetUid(const Orska::Support::orska_wstring& in_uid) {
        Set(DIALOG_FIELDS[FieldIndex("UID")], in_uid);
    }
    void SetPwd(const Orska::Support::orska_wstring& in_pwd) {
        Set(DIALOG_FIELDS[FieldIndex("PWD")], in_pwd);
    }
    void SetDatabase(const Orska::Support::orska_wstring& in_database) {
        Set(DIALOG_FIELDS[FieldIndex("Database")], in_database);
    }

private:
    void ParseDSNAttribute(const Orska::Support::orska_wstring& in_attributeString);
    struct Line;
    std::vector<Line> TakeLines();
    void CheckLines(const std::vector<Line>& in_lines) const;
    void RemoveStoredSection();
    void WriteKey(const Orska::Support::orska_wstring& in_key,
                  const Orska::Support::orska_wstring& in_value);

    static std::size_t IndexOf(const DialogField& in_field) noexcept {
        return static_cast<std::size_t>(&in_field - DIALOG_FIELDS.data());
    }

    /// In the order of `DIALOG_FIELDS`.
    std::array<Orska::Support::orska_wstring, DIALOG_FIELDS.size()> m_values;
    Orska::Support::orska_wstring m_driverDescription;
};

}  // namespace Veltrane::ODBC

#endif
