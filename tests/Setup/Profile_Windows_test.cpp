/// The profile on a scratch registry, to which HKEY_CURRENT_USER is redirected in this process.
#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <thread>

#include "Setup/OdbcInstaller.h"
#include "Setup/Profile.h"
#include "tools/WindowsApi.h"
// They need the Windows API, so they follow it.
#include <aclapi.h>
#include <odbcinst.h>
#include <sddl.h>

namespace {

constexpr wchar_t SCRATCH[] = L"Software\\Veltrane Tests\\Profile";
constexpr wchar_t DSN[] = L"Software\\ODBC\\ODBC.INI\\x";

LONG Write(const wchar_t* in_key, DWORD in_type, const std::wstring& in_text) {
    return RegSetKeyValueW(HKEY_CURRENT_USER, DSN, in_key, in_type, in_text.c_str(),
                           static_cast<DWORD>((in_text.size() + 1) * sizeof(wchar_t)));
}

/// Process-wide: set by a test; the next query of "k" writes it as the value first.
std::wstring s_late;

LONG WINAPI QueryLate(HKEY in_key, const wchar_t* in_name, DWORD* out_ignored, DWORD* out_type,
                      BYTE* out_data, DWORD* io_size) {
    if (std::wcscmp(in_name, L"k") == 0 && !s_late.empty()) {
        Write(in_name, REG_SZ, std::exchange(s_late, std::wstring()));
    }
    const auto query = reinterpret_cast<decltype(&RegQueryValueExW)>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"advapi32.dll"), "RegQueryValueExW")));
    return query(in_key, in_name, out_ignored, out_type, out_data, io_size);
}

}  // namespace

/// Replaces the pointer of the import library.
extern "C" decltype(&RegQueryValueExW) __imp_RegQueryValueExW;
decltype(&RegQueryValueExW) __imp_RegQueryValueExW = &QueryLate;

namespace Veltrane::ODBC {
namespace {

class ProfileTest : public testing::Test {
protected:
    ProfileTest() {
        SetEnvironmentVariableW(L"VELTRANE_TEST_INSTALLER_KEY", L"ODBC");
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, SCRATCH, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr);
        RegOverridePredefKey(HKEY_CURRENT_USER, key);
        RegCloseKey(key);
        Write(L"Driver", REG_SZ, L"drv");
    }
    ~ProfileTest() override {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, SCRATCH);
    }
};

TEST_F(ProfileTest, AValueThatGrowsWhileItIsReadIsReadWhole) {
    Write(L"k", REG_SZ, L"short");
    s_late = std::wstring(5000, L'n');
    EXPECT_EQ(Profile(Profile::Kind::USER_DATA_SOURCES).Read().Get("x", "k"),
              std::string(5000, 'n'));
}

TEST_F(ProfileTest, TheLockIsForThoseWhoMayWrite) {
    HANDLE token = nullptr;
    BYTE user[256];
    DWORD size = 0;
    wchar_t* sid = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    ASSERT_TRUE(GetTokenInformation(token, TokenUser, user, sizeof user, &size));
    ASSERT_TRUE(ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user)->User.Sid, &sid));
    CloseHandle(token);
    const struct {
        Profile::Kind m_kind;
        std::wstring m_name;
        std::wstring m_holder;
    } cases[] = {
        {Profile::Kind::USER_DATA_SOURCES, L"-" + std::wstring(sid), sid},
        {Profile::Kind::SYSTEM_DATA_SOURCES, L"", L"BA"},
        {Profile::Kind::DRIVERS, L"", L"BA"},
    };
    LocalFree(sid);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.m_name));
        Profile(c.m_kind).Change([&](ProfileChange&) {
            const HANDLE lock = OpenMutexW(SYNCHRONIZE | READ_CONTROL, FALSE,
                                           (L"Global\\veltrane-dsn-change" + c.m_name).c_str());
            ASSERT_NE(lock, nullptr);
            std::thread other([&] { EXPECT_EQ(WaitForSingleObject(lock, 0), WAIT_TIMEOUT); });
            other.join();
            PSECURITY_DESCRIPTOR rights = nullptr;
            wchar_t* text = nullptr;
            GetSecurityInfo(lock, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                            nullptr, nullptr, &rights);
            ConvertSecurityDescriptorToStringSecurityDescriptorW(
                rights, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr);
            EXPECT_EQ(text, L"D:P(A;;0x100001;;;" + c.m_holder + L")(A;;0x100001;;;SY)");
            LocalFree(text);
            LocalFree(rights);
            CloseHandle(lock);
        });
    }
}

TEST_F(ProfileTest, AValueWithVariablesStaysOne) {
    using namespace OdbcInstaller;
    const orska_wstring file(L"odbc.ini");
    const auto stored = [](const wchar_t* in_key) {
        wchar_t text[64] = L"";
        DWORD size = sizeof text;
        DWORD type = REG_NONE;
        RegGetValueW(HKEY_CURRENT_USER, DSN, in_key, RRF_RT_ANY | RRF_NOEXPAND, &type, text, &size);
        return std::pair(type, std::wstring(text));
    };
    SQLSetConfigMode(ODBC_USER_DSN);
    Write(L"k", REG_EXPAND_SZ, L"%OS%");
    const Profile profile(Profile::Kind::USER_DATA_SOURCES);
    profile.Change([](ProfileChange& io_change) { io_change.Set("x", "k", "a%OS%"); });
    EXPECT_EQ(stored(L"k"), std::pair(DWORD{REG_EXPAND_SZ}, std::wstring(L"a%OS%")));

    // As in a request: read, write the section again, write values.
    const Request request;
    orska_wstring value;
    GetPrivateProfileString(L"x", L"k", L"", value, 260, file);
    ASSERT_TRUE(RemoveDSNFromIni(L"x"));
    EXPECT_TRUE(WritePrivateProfileString(L"x", L"k", value, file));
    EXPECT_TRUE(WritePrivateProfileString(L"x", L"new", L"%OS%", file));
    EXPECT_EQ(stored(L"k"), std::pair(DWORD{REG_EXPAND_SZ}, std::wstring(L"a%OS%")));
    EXPECT_EQ(stored(L"new"), std::pair(DWORD{REG_SZ}, std::wstring(L"%OS%")));
}

}  // namespace
}  // namespace Veltrane::ODBC
