/// Runs when odbccp32.dll cannot be loaded.
#include <gtest/gtest.h>

#include <string>

#include "Setup/OdbcInstaller.h"
#include "tests/support/DialogUser.h"

namespace Veltrane::ODBC {
namespace {

using OdbcInstaller::orska_wstring;
using Veltrane::Test::DialogUser;

BOOL CALLBACK NoteStatic(HWND in_window, LPARAM in_texts) {
    wchar_t kind[32] = L"";
    wchar_t text[256] = L"";
    GetClassNameW(in_window, kind, 32);
    DialogUser::Send(in_window, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text));
    if (_wcsicmp(kind, L"Static") == 0 && *text != L'\0') {
        *reinterpret_cast<std::wstring*>(in_texts) += std::wstring(L"[") + text + L"]";
    }
    return TRUE;
}

TEST(InstallerMissing, TheUserIsToldOnceAndEveryOperationFails) {
    ASSERT_EQ(LoadLibraryW(L"odbccp32.dll"), nullptr) << "the test has to run without it";
    std::wstring texts;  // of every box
    DialogUser user(L"ODBC Installer Error", [&](HWND in_box) {
        EnumChildWindows(in_box, &NoteStatic, reinterpret_cast<LPARAM>(&texts));
        DialogUser::Press(in_box, IDOK);
    });
    orska_wstring value(L"before");
    const orska_wstring file(L"odbc.ini");
    EXPECT_FALSE(OdbcInstaller::ValidDSN(L"a"));
    EXPECT_LE(OdbcInstaller::GetPrivateProfileString(L"a", L"k", L"d", value, 260, file), 0);
    EXPECT_EQ(value, orska_wstring(L""));
    EXPECT_FALSE(OdbcInstaller::WritePrivateProfileString(L"a", L"k", L"v", file));
    EXPECT_FALSE(OdbcInstaller::WriteDSNToIni(L"a", L"drv"));
    EXPECT_FALSE(OdbcInstaller::RemoveDSNFromIni(L"a"));
    EXPECT_FALSE(OdbcInstaller::PostInstallerError(11, L"text"));
    EXPECT_STREQ(OdbcInstaller::Request().GetModeName(), "unknown");
    user.Stop();
    EXPECT_EQ(texts, L"[The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.]");
}

}  // namespace
}  // namespace Veltrane::ODBC
