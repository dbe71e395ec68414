/// A user for the dialogs that a test opens on Windows: a thread that waits for dialogs with a
/// title, or any for null, and handles each.
#ifndef TESTS_SUPPORT_DIALOGUSER_H
#define TESTS_SUPPORT_DIALOGUSER_H

#include <atomic>
#include <functional>
#include <thread>

#include "tools/WindowsApi.h"

namespace Veltrane::Test {

class DialogUser {
public:
    /// @param in_act  called in the user's thread for each dialog; has to close it
    DialogUser(const wchar_t* in_title, std::function<void(HWND)> in_act)
        : m_title(in_title), m_act(std::move(in_act)), m_thread([this] { Watch(); }) {}
    DialogUser(const DialogUser&) = delete;
    DialogUser& operator=(const DialogUser&) = delete;
    ~DialogUser() { Stop(); }

    /// Sends a message, with a time limit in case the window's thread no longer answers.
    static void Send(HWND in_window, UINT in_message, WPARAM in_first, LPARAM in_second) {
        SendMessageTimeoutW(in_window, in_message, in_first, in_second, SMTO_NORMAL, 5000, nullptr);
    }

    /// Presses a button that closes the dialog, and waits until the dialog is gone. The message is
    /// posted, so it waits in the queue until the dialog is fully open; a sent one can come before.
    static void Press(HWND in_dialog, WPARAM in_button) {
        PostMessageW(in_dialog, WM_COMMAND, in_button, 0);
        for (int i = 0; i < 500 && IsWindow(in_dialog); ++i) Sleep(10);
    }

    /// Ends the thread. Its results may be read then.
    void Stop() {
        m_isStopped = true;
        if (m_thread.joinable()) m_thread.join();
    }

private:
    void Watch() {
        while (!m_isStopped) {
            const HWND dialog = FindWindowW(L"#32770", m_title);
            DWORD process = 0;
            GetWindowThreadProcessId(dialog, &process);
            if (process == GetCurrentProcessId() && IsWindowVisible(dialog)) m_act(dialog);
            Sleep(10);
        }
    }

    const wchar_t* m_title;
    std::function<void(HWND)> m_act;
    std::atomic<bool> m_isStopped{false};
    std::thread m_thread;
};

}  // namespace Veltrane::Test

#endif
