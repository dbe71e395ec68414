#include "Setup/TracedInstaller.h"

#include "Setup/OdbcInstaller.h"
#include "Setup/VeltraneDSNConfiguration.h"
#include "tools/trace.h"

namespace Veltrane::ODBC::TracedInstaller {

namespace {

constexpr char SOURCE[] = "Setup\\OdbcInstaller";
constexpr int LEVEL = 3;

bool IsSecret(const orska_wstring& in_key) { return in_key == UID || in_key == PWD; }

/// Returns a value as a trace line can show it.
std::string ValueForTrace(const orska_wstring& in_key, const orska_wstring& in_value) {
    if (IsSecret(in_key)) {
        return "(not shown)";
    }
    return "\"" + ForTrace(in_value) + "\"";
}

}  // namespace

std::string ForTrace(const orska_wstring& in_text) {
    std::string text = in_text.GetAsUtf8();
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            c = '?';
        }
    }
    return text;
}

bool ValidDSN(const orska_wstring& in_name) {
    const bool isValid = OdbcInstaller::ValidDSN(in_name);
    ORSKA_TRACE(LEVEL, "Veltrane::ODBC::OdbcInstaller::ValidDSN", SOURCE, 0, "[%s] = %d",
                ForTrace(in_name).c_str(), isValid);
    return isValid;
}

int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file) {
    const int count = OdbcInstaller::GetPrivateProfileString(in_section, in_key, in_default,
                                                             out_value, in_bufferSize, in_file);
    ORSKA_TRACE(LEVEL, "Veltrane::ODBC::OdbcInstaller::GetPrivateProfileString", SOURCE, 0,
                "[%s] %s: %s = %d", ForTrace(in_section).c_str(), ForTrace(in_key).c_str(),
                ValueForTrace(in_key, out_value).c_str(),
                // The length of a password is secret too.
                IsSecret(in_key) && count > 0 ? 1 : count);
    return count;
}

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    const bool isDone =
        OdbcInstaller::WritePrivateProfileString(in_section, in_key, in_value, in_file);
    ORSKA_TRACE(LEVEL, "Veltrane::ODBC::OdbcInstaller::WritePrivateProfileString", SOURCE, 0,
                "[%s] %s: %s = %d", ForTrace(in_section).c_str(), ForTrace(in_key).c_str(),
                ValueForTrace(in_key, in_value).c_str(), isDone);
    return isDone;
}

bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    if (OdbcInstaller::IsWritableDSN(in_dsn, in_driver)) return true;
    ORSKA_TRACE(1, "Veltrane::ODBC::OdbcInstaller::IsWritableDSN", SOURCE, 0,
                "[%s] driver \"%s\": cannot be stored", ForTrace(in_dsn).c_str(),
                ForTrace(in_driver).c_str());
    return false;
}

bool IsWritableValue(const orska_wstring& in_key, const orska_wstring& in_value) {
    if (OdbcInstaller::IsWritableValue(in_key, in_value)) return true;
    ORSKA_TRACE(1, "Veltrane::ODBC::OdbcInstaller::IsWritableValue", SOURCE, 0,
                "%s: %s cannot be stored", ForTrace(in_key).c_str(),
                ValueForTrace(in_key, in_value).c_str());
    return false;
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    const bool isDone = OdbcInstaller::WriteDSNToIni(in_dsn, in_driver);
    ORSKA_TRACE(LEVEL, "Veltrane::ODBC::OdbcInstaller::WriteDSNToIni", SOURCE, 0,
                "[%s] driver \"%s\" = %d", ForTrace(in_dsn).c_str(), ForTrace(in_driver).c_str(),
                isDone);
    return isDone;
}

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    const bool isDone = OdbcInstaller::RemoveDSNFromIni(in_dsn);
    ORSKA_TRACE(LEVEL, "Veltrane::ODBC::OdbcInstaller::RemoveDSNFromIni", SOURCE, 0, "[%s] = %d",
                ForTrace(in_dsn).c_str(), isDone);
    return isDone;
}

bool PostInstallerError(unsigned long in_code, const orska_wstring& in_text) {
    const bool isDone = OdbcInstaller::PostInstallerError(in_code, in_text);
    ORSKA_TRACE(LEVEL, "Veltrane::ODBC::OdbcInstaller::PostInstallerError", SOURCE, 0,
                "%lu \"%s\" = %d", in_code, ForTrace(in_text).c_str(), isDone);
    return isDone;
}

}  // namespace Veltrane::ODBC::TracedInstaller
