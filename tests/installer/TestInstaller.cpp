/// An ODBC installer for tests: an odbccp32.dll that behaves as the system's, with its error list,
/// config mode, data sources of the user and the system, and drivers with a Setup value, on a
/// scratch key of the registry (TestProfile.h). Wine's lacks the errors and the truncation, and has
/// only one root for each operation.
///
/// For one thread. It passes request types to the setup library unchanged, invalid ones too, and
/// sets the config mode for those of the system.
#include "tests/installer/TestInstaller.h"

#include "tools/WindowsApi.h"
// Must follow <windows.h>. Its macros would rename the narrow functions.
#include <odbcinst.h>
#undef SQLConfigDataSource

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

#include "PlatformAbstraction/base/Wipe.h"
#include "tests/installer/TestProfile.h"

namespace TestProfile = Veltrane::Test::TestProfile;
using TestProfile::Root;

namespace {

constexpr std::size_t MAX_ERRORS = 8;
constexpr std::size_t MAX_NAME = 32;
constexpr wchar_t DATA_SOURCES[] = L"ODBC Data Sources";
constexpr wchar_t ODBC_INI[] = L"odbc.ini";

struct Error {
    DWORD m_code;
    std::wstring m_text;
};

/// For a test in another process.
std::wstring ReadFailing() {
    const wchar_t* const operation = _wgetenv(L"VELTRANE_TEST_INSTALLER_FAILS");
    return operation != nullptr ? operation : L"";
}

// Process-wide: set by the functions below and by the test, read by the functions below.
std::vector<Error> s_errors;
UWORD s_mode = ODBC_BOTH_DSN;
std::wstring s_failing = ReadFailing();

BOOL Post(DWORD in_code, const wchar_t* in_text) {
    if (s_errors.size() < MAX_ERRORS) s_errors.push_back({in_code, in_text});
    return FALSE;
}

BOOL Fail() { return Post(ODBC_ERROR_GENERAL_ERR, L"General installer error"); }

Root WrittenRoot() { return s_mode == ODBC_SYSTEM_DSN ? Root::SYSTEM : Root::USER; }

std::optional<std::wstring> ReadInMode(const std::wstring& in_section, const std::wstring& in_key) {
    std::optional<std::wstring> value;
    if (s_mode != ODBC_SYSTEM_DSN) value = TestProfile::Read(Root::USER, in_section, in_key);
    if (!value && s_mode != ODBC_USER_DSN) {
        value = TestProfile::Read(Root::SYSTEM, in_section, in_key);
    }
    return value;
}

std::wstring Widen(const char* in_text) {
    std::wstring text(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, in_text, -1, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, in_text, -1, text.data(), static_cast<int>(text.size()));
    text.pop_back();
    return text;
}

/// Loads the driver's setup library for one call, as the real installer does.
template <typename Char>
BOOL Configure(HWND in_parent, WORD in_request, const std::wstring& in_driver, const char* in_entry,
               const Char* in_description, const Char* in_attributes) {
    s_errors.clear();
    const auto setup = TestProfile::Read(Root::DRIVERS, in_driver, L"Setup");
    if (!setup) return Post(ODBC_ERROR_COMPONENT_NOT_FOUND, L"Component not found in the registry");
    const HMODULE library = LoadLibraryW(setup->c_str());
    if (library == nullptr) {
        return Post(ODBC_ERROR_LOAD_LIB_FAILED, L"Could not load the setup or translator library");
    }
    using Entry = int (*)(HWND, WORD, const Char*, const Char*);
    const auto entry =
        reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(library, in_entry)));
    const UWORD mode = s_mode;
    if (in_request <= ODBC_REMOVE_SYS_DSN) {
        s_mode = in_request >= ODBC_ADD_SYS_DSN ? ODBC_SYSTEM_DSN : ODBC_USER_DSN;
    }
    const BOOL result = entry != nullptr
                            ? entry(in_parent, in_request, in_description, in_attributes)
                            : Post(ODBC_ERROR_LOAD_LIB_FAILED, L"No entry point");
    s_mode = mode;
    FreeLibrary(library);
    return result;
}

}  // namespace

extern "C" {

void TestInstallerFailAt(const wchar_t* in_operation) { s_failing = in_operation; }

BOOL INSTAPI SQLConfigDataSource(HWND in_parent, WORD in_request, LPCSTR in_driver,
                                 LPCSTR in_attributes) {
    return Configure(in_parent, in_request, Widen(in_driver), "ConfigDSN", in_driver,
                     in_attributes);
}

BOOL INSTAPI SQLConfigDataSourceW(HWND in_parent, WORD in_request, LPCWSTR in_driver,
                                  LPCWSTR in_attributes) {
    return Configure(in_parent, in_request, in_driver, "ConfigDSNW", in_driver, in_attributes);
}

BOOL INSTAPI SQLGetConfigMode(UWORD* out_mode) {
    s_errors.clear();
    *out_mode = s_mode;
    return TRUE;
}

BOOL INSTAPI SQLSetConfigMode(UWORD in_mode) {
    s_errors.clear();
    if (in_mode > ODBC_SYSTEM_DSN) return Post(ODBC_ERROR_INVALID_PARAM_SEQUENCE, L"Invalid mode");
    s_mode = in_mode;
    return TRUE;
}

SQLRETURN INSTAPI SQLPostInstallerErrorW(DWORD in_code, LPCWSTR in_text) {
    if (in_code < ODBC_ERROR_GENERAL_ERR || in_code > ODBC_ERROR_OUTPUT_STRING_TRUNCATED) {
        return SQL_ERROR;
    }
    Post(in_code, in_text != nullptr ? in_text : L"");
    return SQL_SUCCESS;
}

SQLRETURN INSTAPI SQLInstallerErrorW(WORD in_number, DWORD* out_code, LPWSTR out_text, WORD in_size,
                                     WORD* out_length) {
    if (in_number < 1 || in_number > MAX_ERRORS || in_size == 0) return SQL_ERROR;
    if (in_number > s_errors.size()) return SQL_NO_DATA;
    const Error& error = s_errors[in_number - 1U];
    const std::size_t length = error.m_text.copy(out_text, in_size - 1U);
    out_text[length] = L'\0';
    *out_code = error.m_code;
    *out_length = static_cast<WORD>(error.m_text.size());
    return length < error.m_text.size() ? SQL_SUCCESS_WITH_INFO : SQL_SUCCESS;
}

BOOL INSTAPI SQLValidDSNW(LPCWSTR in_name) {
    s_errors.clear();
    const std::wstring name = in_name != nullptr ? in_name : L"";
    return !name.empty() && name.size() <= MAX_NAME &&
           name.find_first_of(L"[]{}(),;?*=!@\\") == std::wstring::npos;
}

int INSTAPI SQLGetPrivateProfileStringW(LPCWSTR in_section, LPCWSTR in_key, LPCWSTR in_default,
                                        LPWSTR out_value, int in_size, LPCWSTR in_file) {
    s_errors.clear();
    if (in_section == nullptr || in_key == nullptr || in_size < 1) return Fail();
    if (_wcsicmp(in_file, ODBC_INI) != 0) return Fail();
    std::wstring value = ReadInMode(in_section, in_key).value_or(in_default);
    const Orska::Support::WipeAtEnd wipe(value);  // a test looks for copies of passwords
    const std::size_t length = value.copy(out_value, static_cast<std::size_t>(in_size) - 1);
    out_value[length] = L'\0';
    return static_cast<int>(length);
}

BOOL INSTAPI SQLWritePrivateProfileStringW(LPCWSTR in_section, LPCWSTR in_key, LPCWSTR in_value,
                                           LPCWSTR in_file) {
    s_errors.clear();
    if (in_section == nullptr || *in_section == L'\0' || _wcsicmp(in_file, ODBC_INI) != 0) {
        return Fail();
    }
    if (in_key == nullptr) return TestProfile::RemoveSection(WrittenRoot(), in_section);
    if (s_failing == std::wstring(L"Write ") + in_key) return Fail();
    return TestProfile::Write(WrittenRoot(), in_section, in_key, in_value) || Fail();
}

BOOL INSTAPI SQLRemoveDSNFromIniW(LPCWSTR in_dsn) {
    if (!SQLValidDSNW(in_dsn)) return Post(ODBC_ERROR_INVALID_DSN, L"Invalid DSN");
    if (s_failing == L"RemoveDSN") return Fail();
    TestProfile::Write(WrittenRoot(), DATA_SOURCES, in_dsn, nullptr);
    return TestProfile::RemoveSection(WrittenRoot(), in_dsn) || Fail();
}

BOOL INSTAPI SQLWriteDSNToIniW(LPCWSTR in_dsn, LPCWSTR in_driver) {
    if (!SQLValidDSNW(in_dsn)) return Post(ODBC_ERROR_INVALID_DSN, L"Invalid DSN");
    if (s_failing == L"WriteDSN") return Fail();
    const auto path = TestProfile::Read(Root::DRIVERS, in_driver, L"Driver");
    if (!path) return Post(ODBC_ERROR_INVALID_NAME, L"Invalid driver or translator name");
    const bool isDone = TestProfile::RemoveSection(WrittenRoot(), in_dsn) &&
                        TestProfile::Write(WrittenRoot(), DATA_SOURCES, in_dsn, in_driver) &&
                        TestProfile::Write(WrittenRoot(), in_dsn, L"Driver", path->c_str());
    return isDone || Fail();
}

}  // extern "C"
