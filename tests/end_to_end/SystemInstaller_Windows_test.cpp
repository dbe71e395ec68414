/// The built library through the system's odbccp32.dll, here Wine's. It loads the library, writes a
/// section to one root and values to the other, and keeps no errors of ours. For an empty name it
/// would remove every data source, so each request here has a name.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <odbcinst.h>
#undef SQLConfigDataSource

namespace Veltrane::Test {
namespace {

constexpr wchar_t DRIVER_KEY[] = L"Software\\ODBC\\ODBCINST.INI\\Veltrane Test";
constexpr wchar_t DSN_KEY[] = L"Software\\ODBC\\ODBC.INI\\veltrane-test";

std::wstring Read(HKEY in_root, const wchar_t* in_key) {
    wchar_t text[512] = L"(absent)";
    DWORD bytes = sizeof text;
    RegGetValueW(in_root, DSN_KEY, in_key, RRF_RT_REG_SZ, nullptr, text, &bytes);
    return text;
}

class SystemInstaller : public testing::Test {
protected:
    SystemInstaller() {
        // Wine's reads "Driver", others read "Setup".
        for (const wchar_t* value : {L"Driver", L"Setup"}) {
            RegSetKeyValueW(HKEY_LOCAL_MACHINE, DRIVER_KEY, value, REG_SZ, SETUP_LIBRARY,
                            sizeof SETUP_LIBRARY);
        }
        std::ofstream(m_values, std::ios::binary)
            << "[DSN]\nDSN=veltrane-test\nServer=ü€日本😀\nPWD= p w \nDatabase=d\n";
        _wputenv_s(L"VELTRANE_DSN_INITIAL_VALUES", m_values.c_str());
    }
    ~SystemInstaller() override {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, DRIVER_KEY);
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, DSN_KEY);
        RegDeleteTreeW(HKEY_CURRENT_USER, DSN_KEY);
        std::error_code ignored;
        std::filesystem::remove(m_values, ignored);
    }

    std::filesystem::path m_values =
        std::filesystem::temp_directory_path() / "veltrane-system-installer.ini";
};

TEST_F(SystemInstaller, PassesOnRequestsInBothWidthsAndRefusals) {
    const struct {
        WORD m_request;
        const wchar_t* m_driver;  ///< of the user's data source after it
    } steps[] = {
        {ODBC_ADD_DSN, L"Veltrane Test"},        {ODBC_CONFIG_DSN, L"Veltrane Test"},
        {ODBC_REMOVE_DSN, L"(absent)"},          {ODBC_ADD_SYS_DSN, L"Veltrane Test"},
        {ODBC_CONFIG_SYS_DSN, L"Veltrane Test"}, {ODBC_REMOVE_SYS_DSN, L"(absent)"},
    };
    for (const bool isWide : {true, false}) {
        for (const auto& step : steps) {
            SCOPED_TRACE(testing::Message() << step.m_request << (isWide ? " wide" : " narrow"));
            RegDeleteTreeW(HKEY_CURRENT_USER, DSN_KEY);  // because Wine's removal leaves it
            EXPECT_TRUE(isWide ? SQLConfigDataSourceW(nullptr, step.m_request, L"Veltrane Test",
                                                      L"DSN=veltrane-test\0")
                               : SQLConfigDataSource(nullptr, step.m_request, "Veltrane Test",
                                                     "DSN=veltrane-test\0"));
            EXPECT_EQ(Read(HKEY_CURRENT_USER, L"Driver"), step.m_driver);
            const bool isThere = step.m_driver != std::wstring(L"(absent)");
            EXPECT_EQ(Read(HKEY_CURRENT_USER, L"Server"),
                      isThere ? L"ü€日本\U0001F600" : L"(absent)");
            EXPECT_EQ(Read(HKEY_CURRENT_USER, L"PWD"), isThere ? L"p w" : L"(absent)");
            EXPECT_EQ(Read(HKEY_CURRENT_USER, L"UID"), L"(absent)");
            // From the registered drivers.
            EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, L"Driver"), isThere ? SETUP_LIBRARY : L"(absent)");
        }
    }
    EXPECT_FALSE(SQLConfigDataSourceW(nullptr, ODBC_REMOVE_DSN, L"Veltrane Test", L"DSN=a[b\0"));
}

}  // namespace
}  // namespace Veltrane::Test
