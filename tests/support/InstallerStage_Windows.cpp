#include "tests/support/InstallerStage.h"

#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <odbcinst.h>

#include "PlatformAbstraction/strings/orska_wstring.h"
#include "tests/installer/TestInstaller.h"
#include "tests/installer/TestProfile.h"

namespace Veltrane::Test {

using Orska::Support::orska_wstring;
using TestProfile::Root;

namespace {

std::string Narrow(const std::wstring& in_text) {
    return orska_wstring(in_text.c_str()).GetAsUtf8();
}

std::wstring Widen(const std::string& in_text) {
    return orska_wstring(in_text).GetAsPlatformWString();
}

Profile ReadRoot(Root in_root) {
    Profile profile;
    for (const auto& [name, section] : TestProfile::List(in_root)) {
        if (name == L"ODBC Data Sources") continue;
        for (const auto& [key, value] : section) {
            profile[Narrow(name)][Narrow(key)] = Narrow(value);
        }
    }
    return profile;
}

}  // namespace

const char* const InstallerStage::WRITTEN_DRIVER = "path of drv";
const bool InstallerStage::IS_REGISTRY = true;

InstallerStage::InstallerStage() {
    TestProfile::UseScratchKey();
    TestProfile::Write(Root::DRIVERS, L"drv", L"Driver", L"path of drv");
}

InstallerStage::~InstallerStage() { TestProfile::RemoveScratchKey(); }

void InstallerStage::Begin(bool in_isSystem, const Profile& in_profile) {
    m_isSystem = in_isSystem;
    TestProfile::Clear(Root::USER);
    TestProfile::Clear(Root::SYSTEM);
    for (const auto& [name, keys] : in_profile) {
        for (const auto& [key, value] : keys) {
            TestProfile::Write(in_isSystem ? Root::SYSTEM : Root::USER, Widen(name), Widen(key),
                               Widen(value).c_str());
        }
    }
    FailAt("");
    // Empties the list of errors as well.
    SQLSetConfigMode(in_isSystem ? ODBC_BOTH_DSN : ODBC_USER_DSN);
}

Profile InstallerStage::Get() { return ReadRoot(m_isSystem ? Root::SYSTEM : Root::USER); }

Profile InstallerStage::GetOther() { return ReadRoot(m_isSystem ? Root::USER : Root::SYSTEM); }

void InstallerStage::FailAt(const std::string& in_operation) {
    TestInstallerFailAt(Widen(in_operation).c_str());
}

std::vector<std::pair<unsigned long, std::string>> InstallerStage::Posted() {
    std::vector<std::pair<unsigned long, std::string>> errors;
    DWORD code = 0;
    wchar_t text[1024];
    WORD length = 0;
    for (WORD i = 1; SQLInstallerErrorW(i, &code, text, 1024, &length) == SQL_SUCCESS; ++i) {
        if (code != ODBC_ERROR_GENERAL_ERR) errors.emplace_back(code, Narrow(text));
    }
    return errors;
}

}  // namespace Veltrane::Test
