#include "VeltraneDialog/editors/TerminalTest.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"
#include "VeltraneDialog/editors/ConnectionTry.h"
#include "VeltraneDialog/editors/Texts.h"

namespace Veltrane::ODBC {

namespace {

using Orska::Support::FileDescriptor;

constexpr int WIDTH = 66;
constexpr int MAX_HEIGHT = 14;
constexpr std::size_t MAX_OUTPUT = std::size_t{64} << 10;

/// A run of the tool with the values on its standard input.
class Trial {
public:
    explicit Trial(const DialogValues& in_values) {
        // A file in memory, because a pipe may not hold all of it.
        const FileDescriptor input(memfd_create("connection", MFD_CLOEXEC));
        std::string text = MakeConnectionString(in_values);
        const WipeAtEnd<char> wipe(text);
        int ends[2] = {-1, -1};
        const bool isReady =
            write(input.Get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
            lseek(input.Get(), 0, SEEK_SET) == 0 && pipe2(ends, O_CLOEXEC) == 0;
        m_output = FileDescriptor(ends[0]);
        const FileDescriptor output(ends[1]);
        const int error = isReady ? Spawn(input.Get(), output.Get()) : errno;
        if (error != 0) {
            m_text = Orska::Support::DescribeSystemError(static_cast<std::uint32_t>(error));
        }
    }
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;
    /// Ends a tool that still runs.
    ~Trial() {
        if (m_process <= 0) return;
        kill(m_process, SIGTERM);
        while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) continue;
    }

    /// Readable when `Read` has something to do.
    int GetOutput() const { return m_output.Get(); }

    /// @return false at the end
    bool Read() {
        char bytes[4096];
        const ssize_t count = read(m_output.Get(), bytes, sizeof bytes);
        if (count > 0 && m_text.size() < MAX_OUTPUT) {
            m_text.append(bytes, static_cast<std::size_t>(count));
        }
        return count > 0 || (count < 0 && errno == EINTR);
    }
    bool IsStarted() const { return m_process > 0; }
    std::string GetText() const {
        std::u16string checked;
        return DecodeUtf8(m_text, checked) ? m_text : std::string();
    }

private:
    int Spawn(int in_input, int in_output) {
        std::string program = FindTool();
        char* arguments[std::size(TEST_ARGUMENTS) + 2] = {program.data()};
        for (std::size_t i = 0; i < std::size(TEST_ARGUMENTS); ++i) {
            arguments[i + 1] = const_cast<char*>(TEST_ARGUMENTS[i]);
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in_input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, in_output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, in_output, STDERR_FILENO);
        const int error =
            posix_spawn(&m_process, program.c_str(), &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        if (error != 0) m_process = -1;
        return error;
    }

    pid_t m_process = -1;
    FileDescriptor m_output;
    std::string m_text;
};

/// A text and a button over the form.
class Window {
public:
    Window(const std::string& in_text, const char* in_button, int in_host) : m_host(in_host) {
        const newtComponent text =
            newtTextboxReflowed(1, 1, const_cast<char*>(in_text.c_str()), WIDTH, 0, 0, 0);
        const int lines = newtTextboxGetNumLines(text);
        const int height = lines < MAX_HEIGHT ? lines : MAX_HEIGHT;
        newtTextboxSetHeight(text, height);
        newtCenteredWindow(WIDTH + 4, static_cast<unsigned>(height + 4),
                           TranslatePlain(TEXT_TEST).c_str());
        const newtComponent button =
            newtCompactButton(2, height + 2, TranslatePlain(in_button).c_str());
        m_form = newtForm(nullptr, nullptr, NEWT_FLAG_NOF12);
        newtFormAddComponents(m_form, text, button, nullptr);
        for (const int key : {NEWT_KEY_ESCAPE + 0, KEY_CONTROL_C}) newtFormAddHotKey(m_form, key);
        newtFormSetCurrent(m_form, button);
        newtFormWatchFd(m_form, in_host, NEWT_FD_READ);
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window() {
        newtFormDestroy(m_form);
        newtPopWindow();
    }

    void Watch(int in_descriptor) { newtFormWatchFd(m_form, in_descriptor, NEWT_FD_READ); }

    /// @return true when a watched descriptor is readable, false when the user or the host ends it
    bool Run(const TerminalScreen& in_screen) {
        newtExitStruct exit{};
        in_screen.Run(m_form, exit);
        if (exit.reason == newtExitStruct::NEWT_EXIT_ERROR) TerminalScreen::FailWithoutTerminal();
        return exit.reason == newtExitStruct::NEWT_EXIT_FDREADY && exit.u.watch != m_host;
    }

private:
    int m_host;
    newtComponent m_form = nullptr;
};

}  // namespace

void TestInTerminal(const DialogValues& in_values, const TerminalScreen& in_screen, int in_host) {
    Trial trial(in_values);
    if (trial.IsStarted()) {
        Window busy(TranslateWith(TEXT_TESTING, EncodeUtf8(*in_values.m_server)), TEXT_STOP,
                    in_host);
        busy.Watch(trial.GetOutput());
        do {
            if (!busy.Run(in_screen)) return;
        } while (trial.Read());
    }
    Window(trial.GetText(), TEXT_OK, in_host).Run(in_screen);
}

}  // namespace Veltrane::ODBC
