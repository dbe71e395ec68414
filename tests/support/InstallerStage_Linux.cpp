#include "tests/support/InstallerStage.h"

#include <gtest/gtest.h>

#include "Setup/OdbcIniText.h"
#include "Setup/OdbcInstaller.h"
#include "tests/support/IniScratch.h"
// The installer's macros have the names of ours.
#include <odbcinst.h>

namespace {

/// Process-wide: set by a test, read by the operations.
std::string s_failing;

}  // namespace

// Operations that can fail, in front of the real ones, which are compiled with other names.
namespace Veltrane::ODBC::OdbcInstaller {

bool RealRemoveDSNFromIni(const orska_wstring& in_dsn);
bool RealWriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver);
bool RealWritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                                   const orska_wstring& in_value, const orska_wstring& in_file);

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    return s_failing != "RemoveDSN" && RealRemoveDSNFromIni(in_dsn);
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    return s_failing != "WriteDSN" && RealWriteDSNToIni(in_dsn, in_driver);
}

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    return s_failing != "Write " + in_key.GetAsUtf8() &&
           RealWritePrivateProfileString(in_section, in_key, in_value, in_file);
}

}  // namespace Veltrane::ODBC::OdbcInstaller

namespace Veltrane::Test {

namespace {

const IniScratch& Scratch() {
    static const IniScratch s_scratch(IniScratch::InMemory());
    return s_scratch;
}

std::filesystem::path FileOf(bool in_isSystem) {
    return in_isSystem ? Scratch().SystemFile() : Scratch().UserFile();
}

Profile ReadFile(const std::filesystem::path& in_file) {
    const ODBC::OdbcIniText text(IniScratch::Read(in_file));
    Profile profile;
    for (const std::string& name : text.GetSections()) {
        for (const auto& [key, value] : text.GetKeyValues(name)) profile[name][key] = value;
    }
    return profile;
}

}  // namespace

const char* const InstallerStage::WRITTEN_DRIVER = "drv";
const bool InstallerStage::IS_REGISTRY = false;

InstallerStage::InstallerStage() = default;
InstallerStage::~InstallerStage() = default;

void InstallerStage::Begin(bool in_isSystem, const Profile& in_profile) {
    m_isSystem = in_isSystem;
    std::filesystem::remove(FileOf(!in_isSystem));
    std::string text;
    for (const auto& [name, keys] : in_profile) {
        text += "[" + name + "]\n";
        for (const auto& [key, value] : keys) text.append(key).append("=").append(value) += '\n';
    }
    IniScratch::Write(FileOf(in_isSystem), text);
    FailAt("");
    // Empties the list of errors as well.
    SQLSetConfigMode(in_isSystem ? ODBC_BOTH_DSN : ODBC_USER_DSN);
}

Profile InstallerStage::Get() {
    EXPECT_LE(Scratch().CountFiles(), 1u) << "a file is left";
    return ReadFile(FileOf(m_isSystem));
}

Profile InstallerStage::GetOther() { return ReadFile(FileOf(!m_isSystem)); }

void InstallerStage::FailAt(const std::string& in_operation) { s_failing = in_operation; }

std::vector<std::pair<unsigned long, std::string>> InstallerStage::Posted() {
    std::vector<std::pair<unsigned long, std::string>> errors;
    DWORD code = 0;
    char text[1024];
    WORD length = 0;
    for (WORD i = 1; SQLInstallerError(i, &code, text, sizeof text, &length) == SQL_SUCCESS; ++i) {
        errors.emplace_back(code, text);
    }
    return errors;
}

}  // namespace Veltrane::Test
