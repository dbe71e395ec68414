/// The built library through the test installer, which loads it for each request and then frees it.
#include <gtest/gtest.h>

#include <thread>

#include "PlatformAbstraction/base/Wipe.h"
#include "VeltraneDialog/library/Resource.h"
#include "tests/installer/TestProfile.h"
#include "tests/support/DialogUser.h"
#include "tests/support/InstallerStage.h"
#include "tests/support/PasswordCopies.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tools/WindowsApi.h"
// Must follow <windows.h>. Its macro would rename the narrow function.
#include <odbcinst.h>
#undef SQLConfigDataSource
#include <psapi.h>

namespace Veltrane::Test {
namespace {

using namespace std::string_literals;
using TestProfile::Root;
using TestProfile::Section;

class SetupLibrary : public testing::Test {
protected:
    SetupLibrary() {
        TestProfile::Write(Root::DRIVERS, L"Veltrane", L"Driver", L"C:\\veltrane.dll");
        TestProfile::Write(Root::DRIVERS, L"Veltrane", L"Setup", SETUP_LIBRARY);
        SetInitialValues("");
    }

    void SetInitialValues(const std::string& in_section) const {
        const std::string file = m_directory.Write("values.ini", "[DSN]\n" + in_section);
        Orska::Test::SetVariable("VELTRANE_DSN_INITIAL_VALUES", file.c_str());
    }

    InstallerStage m_stage;
    const Orska::Test::TemporaryDirectory m_directory;
};

constexpr char VALUES[] =
    "DSN=sales\nServer=db1\nNamespace= cognos \nLoginMode=1\nUID=anna\nPWD=ü€日本😀\nDatabase=d\n";
const Section SAVED = {
    {L"Driver", L"Veltrane"}, {L"Server", L"db1"}, {L"Namespace", L"cognos"},
    {L"LoginMode", L"1"},     {L"UID", L"anna"},   {L"PWD", L"ü€日本\U0001F600"},
    {L"Database", L"d"},
};

// This has to be the first test of the program, because each request keeps the library.
TEST_F(SetupLibrary, IsUnloadedIfNothingWasCalled) {
    bool isFreed = false;
    std::thread([&] { isFreed = FreeLibrary(LoadLibraryW(SETUP_LIBRARY)); }).join();
    EXPECT_TRUE(isFreed);
    EXPECT_EQ(GetModuleHandleW(L"VeltraneSetup.dll"), nullptr);
}

TEST_F(SetupLibrary, WithAWindowTheDialogOfItsFolderEditsTheDataSource) {
    SetInitialValues(VALUES);
    ASSERT_TRUE(SQLConfigDataSourceW(nullptr, ODBC_ADD_DSN, L"Veltrane", L""));
    const struct {
        WPARAM m_button;
        std::wstring m_server;
    } cases[] = {{IDCANCEL, L"db1"}, {IDOK, L"entered ü€"}};
    for (const auto& c : cases) {
        TestProfile::Write(Root::USER, L"sales", L"Extra", L"1");
        DialogUser user(L"Data source sales", [&](HWND in_dialog) {
            DialogUser::Send(GetDlgItem(in_dialog, ID_INPUT + 1), WM_SETTEXT, 0,
                             reinterpret_cast<LPARAM>(L"entered ü€"));
            DialogUser::Press(in_dialog, c.m_button);
        });
        // The handle must not be used, so it points nowhere.
        EXPECT_TRUE(SQLConfigDataSource(reinterpret_cast<HWND>(1), ODBC_CONFIG_DSN, "Veltrane",
                                        "DSN=sales\0"))
            << testing::PrintToString(m_stage.Posted());
        Section expected = SAVED;
        expected[L"Server"] = c.m_server;
        EXPECT_EQ(TestProfile::List(Root::USER)[L"sales"], expected);
    }
}

TEST_F(SetupLibrary, ARefusalHasTheTextOfItsStringTable) {
    EXPECT_FALSE(SQLConfigDataSourceW(nullptr, ODBC_REMOVE_DSN, L"Veltrane", L"DSN=a[b\0"));
    EXPECT_EQ(m_stage.Posted(), (decltype(m_stage.Posted()){{8, "Invalid keyword-value pairs."}}));
}

TEST_F(SetupLibrary, HasItsVersion) {
    const HMODULE library = LoadLibraryExW(SETUP_LIBRARY, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(library, nullptr);
    const HRSRC found = FindResourceW(library, MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
    ASSERT_NE(found, nullptr);
    const std::wstring bytes(
        static_cast<const wchar_t*>(LockResource(LoadResource(library, found))),
        SizeofResource(library, found) / sizeof(wchar_t));
    EXPECT_NE(bytes.find(L"VeltraneSetup.dll"), std::wstring::npos);
    EXPECT_NE(bytes.find(L"FileVersion\0\0" SETUP_VERSION L"\0"s), std::wstring::npos);
    FreeLibrary(library);
}

/// Writes initial values with a password, and leaves no copy of it in this process.
void WriteSecretValues(const std::string& in_path, std::size_t in_length) {
    std::string text = "[DSN]\nDSN=sales\nServer=s\nDatabase=d\nPWD=";
    text.reserve(1000);
    std::u16string password = ODBC::MakePassword(in_length);
    for (const char16_t unit : password) text += static_cast<char>(unit);
    const HANDLE file =
        CreateFileA(in_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    CloseHandle(file);
    Orska::Support::Wipe(text);
    Orska::Support::Wipe(password);
}

/// The library and its dialog. A value of more than 120 characters would leave a copy in the heap
/// of Wine's registry functions.
TEST_F(SetupLibrary, LeavesNoPasswordInItsHost) {
    const struct {
        const char* m_point;
        int m_request;
        WPARAM m_button;  ///< 0: no window
    } cases[] = {{"add", ODBC_ADD_DSN, 0},
                 {"configure", ODBC_CONFIG_DSN, 0},
                 {"accepted", ODBC_CONFIG_DSN, IDOK},
                 {"cancelled", ODBC_CONFIG_DSN, IDCANCEL},
                 {"remove", ODBC_REMOVE_DSN, 0}};
    for (const std::size_t length : {30, 119}) {
        WriteSecretValues(m_directory.GetPath("values.ini"), length);
        for (const auto& c : cases) {
            SCOPED_TRACE(c.m_point + (", " + std::to_string(length)));
            std::optional<DialogUser> user;
            if (c.m_button != 0) {
                user.emplace(L"Data source sales",
                             [&](HWND in_dialog) { DialogUser::Press(in_dialog, c.m_button); });
            }
            EXPECT_TRUE(SQLConfigDataSourceW(user ? reinterpret_cast<HWND>(1) : nullptr,
                                             static_cast<WORD>(c.m_request), L"Veltrane",
                                             L"DSN=sales\0"))
                << testing::PrintToString(m_stage.Posted());
            EXPECT_EQ(ODBC::CopiesOfThePassword(), 0U);
        }
    }
    const std::u16string password = ODBC::MakePassword(100);
    EXPECT_EQ(ODBC::CopiesOfThePassword(), 1U) << "the search finds what is there";
}

/// Bytes of the process's private memory.
std::size_t OwnMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

class SetupLibraryLoads : public SetupLibrary {
protected:
    /// Loads, calls and frees the library in a new thread: the run-time keeps a library with a
    /// thread's data until the thread ends.
    static BOOL InThread(WORD in_request, const wchar_t* in_attributes) {
        BOOL result = FALSE;
        std::thread([&] {
            result = SQLConfigDataSourceW(nullptr, in_request, L"Veltrane", in_attributes);
        }).join();
        return result;
    }

    static void Request(int in_count) {
        for (int i = 0; i < in_count; i += 2) {
            // One request that saves and one that is refused, for both ways through the library.
            ASSERT_TRUE(InThread(ODBC_CONFIG_DSN, L"DSN=sales\0"));
            ASSERT_FALSE(InThread(ODBC_REMOVE_DSN, L"DSN=a[b\0"));
        }
    }

    void CheckMemoryStaysFlat(int in_requests) {
        SetInitialValues(VALUES);
        ASSERT_TRUE(InThread(ODBC_ADD_DSN, L""));
        EXPECT_NE(GetModuleHandleW(L"VeltraneSetup.dll"), nullptr) << "kept, although freed";
        ASSERT_NO_FATAL_FAILURE(Request(in_requests / 10));
        const std::size_t before = OwnMemory();
        ASSERT_NO_FATAL_FAILURE(Request(in_requests));
        const std::size_t after = OwnMemory();
        EXPECT_LT(after, before + 64 * 1024) << before;
        std::printf("%zu bytes before, %zu after %d requests\n", before, after, in_requests);
    }
};

TEST_F(SetupLibraryLoads, OfAFewHundredRequestsLeaveNothing) { CheckMemoryStaysFlat(200); }

// Far more loads than a process has thread-local slots.
TEST_F(SetupLibraryLoads, DISABLED_OfTwentyThousandRequestsLeaveNothing) {
    CheckMemoryStaysFlat(20000);
}

}  // namespace
}  // namespace Veltrane::Test
