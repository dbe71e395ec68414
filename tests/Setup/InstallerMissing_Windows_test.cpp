/// Run where odbccp32.dll cannot be loaded.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "Setup/OdbcInstaller.h"
#include "tools/WindowsApi.h"

namespace Veltrane::ODBC {
namespace {

using OdbcInstaller::orska_wstring;

/// Waits for message boxes with this title, notes the texts in them and closes them.
class BoxWatcher {
public:
    explicit BoxWatcher(const wchar_t* in_title)
        : m_title(in_title), m_thread([this] { Watch(); }) {}
    ~BoxWatcher() { Stop(); }
    void Stop() {
        m_isStopped = true;
        if (m_thread.joinable()) m_thread.join();
    }
    /// Each text of each box in brackets, once it has stopped.
    const std::wstring& GetTexts() const { return m_texts; }

private:
    void Watch() {
        while (!m_isStopped) {
            const HWND box = ::FindWindowW(L"#32770", m_title);
            if (box != nullptr && ::IsWindowVisible(box)) {
                ::EnumChildWindows(box, &NoteStatic, reinterpret_cast<LPARAM>(&m_texts));
                ::SendMessageW(box, WM_COMMAND, IDOK, 0);
            }
            ::Sleep(10);
        }
    }

    static BOOL CALLBACK NoteStatic(HWND in_window, LPARAM in_texts) {
        wchar_t kind[32] = L"";
        wchar_t text[256] = L"";
        ::GetClassNameW(in_window, kind, 32);
        ::SendMessageW(in_window, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text));
        if (::_wcsicmp(kind, L"Static") == 0 && *text != L'\0') {
            *reinterpret_cast<std::wstring*>(in_texts) += std::wstring(L"[") + text + L"]";
        }
        return TRUE;
    }

    const wchar_t* m_title;
    std::wstring m_texts;
    std::atomic<bool> m_isStopped{false};
    std::thread m_thread;
};

TEST(InstallerMissing, TheUserIsToldOnceAndEveryOperationFails) {
    ASSERT_EQ(::LoadLibraryW(L"odbccp32.dll"), nullptr) << "the test has to run without it";
    BoxWatcher watcher(L"ODBC Installer Error");
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
    ::Sleep(50);
    watcher.Stop();
    EXPECT_EQ(watcher.GetTexts(),
              L"[The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.]");
}

}  // namespace
}  // namespace Veltrane::ODBC
