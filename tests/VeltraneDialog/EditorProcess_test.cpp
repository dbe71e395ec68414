#include "VeltraneDialog/EditorProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

namespace Veltrane::ODBC {
namespace {

using testing::HasSubstr;
using testing::Not;

DialogValues Values() {
    DialogValues values;
    values.m_dsn = u"sales";
    values.m_server = u"bi";
    values.m_pwd = u"geheim";
    return values;
}

EditorMessage Ask(const char* in_mode, const DialogValues& in_values = Values(),
                  const char* in_program = FAKE_EDITOR_PROGRAM) {
    setenv("FAKE_EDITOR", in_mode, 1);
    return RunEditor(in_program, ShowRequest(in_values));
}

std::string ErrorOf(const char* in_mode, const char* in_program = FAKE_EDITOR_PROGRAM) {
    try {
        Ask(in_mode, Values(), in_program);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

bool HasNoChildren() { return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD; }

TEST(EditorProcess, ReturnsTheAnswerOfTheEditor) {
    const EditorMessage ok = Ask("ok");
    EXPECT_EQ(ok.m_kind, EditorMessageKind::OK);
    EXPECT_EQ(ok.m_values.m_server, u"bi-changed");
    EXPECT_EQ(ok.m_values.m_pwd, u"geheim");
    EXPECT_EQ(Ask("cancel").m_kind, EditorMessageKind::CANCEL);
    EXPECT_EQ(Ask("byte by byte").m_kind, EditorMessageKind::CANCEL);
    EXPECT_EQ(Ask("unavailable").m_reason, "no form today");
    EXPECT_EQ(Ask("not loaded").m_kind, EditorMessageKind::UNAVAILABLE);
    EXPECT_TRUE(HasNoChildren());
}

TEST(EditorProcess, TheErrorNamesAFailedEditorAndTheReason) {
    const std::string program = std::string("The DSN editor ") + FAKE_EDITOR_PROGRAM;
    const std::string notUnderstood = program + " and its host do not understand each other: ";
    const std::pair<const char*, std::string> cases[] = {
        {"end", program + " ended with status 3 before it answered."},
        {"crash", program + " was ended by signal 9 (Killed) before it answered."},
        {"leave socket", program + " ended with status 3 before it answered."},
        {"close and stay", program + " closed the connection before it answered."},
        {"garbage", notUnderstood + "bytes that are no message."},
        {"show back", notUnderstood + "a message that only the host sends."},
    };
    for (const auto& [mode, error] : cases) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(ErrorOf(mode), error);
        EXPECT_TRUE(HasNoChildren());
    }
}

TEST(EditorProcess, AnEditorThatCannotBeStartedIsAnError) {
    EXPECT_EQ(ErrorOf("ok", FAKE_EDITOR_PROGRAM ".missing"),
              "The DSN editor " FAKE_EDITOR_PROGRAM
              ".missing cannot be started: No such file or directory.");
    EXPECT_TRUE(HasNoChildren());
}

TEST(EditorProcess, AnAnswerIsValidWhateverTheEditorDoesNext) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Ask("answer and leave socket").m_values.m_server, u"bi-changed");
    EXPECT_EQ(Ask("answer and stay").m_values.m_server, u"bi-changed");
    EXPECT_TRUE(HasNoChildren());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(25));
}

TEST(EditorProcess, TheEditorInheritsOnlyTheSocket) {
    setenv("LD_LIBRARY_PATH", "/opt/host/lib", 1);
    setenv("QT_PLUGIN_PATH", "/opt/host/plugins", 1);
    setenv("OF_THE_USER", "kept", 1);
    ASSERT_GE(dup2(STDERR_FILENO, 77), 0);
    signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigfillset(&signals);
    pthread_sigmask(SIG_SETMASK, &signals, nullptr);
    const std::string seen = Ask("surroundings").m_reason;
    EXPECT_THAT(seen, HasSubstr(std::string("arguments=") + FAKE_EDITOR_PROGRAM + " \n"));
    EXPECT_THAT(seen, HasSubstr("OF_THE_USER=kept"));
    EXPECT_THAT(seen, Not(HasSubstr("/opt/host")));
    EXPECT_THAT(seen, Not(HasSubstr("geheim")));
    EXPECT_THAT(seen, HasSubstr("\ndescriptors=0 1 2 \n"));
    EXPECT_THAT(seen, HasSubstr("\nsignals=free default"));
}

TEST(EditorProcess, WorksInAHostWithClosedStandardDescriptors) {
    int saved[3];
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        saved[descriptor] = fcntl(descriptor, F_DUPFD_CLOEXEC, 100);
        close(descriptor);
    }
    const EditorMessage answer = Ask("ok");
    const std::string error = ErrorOf("garbage");
    const std::string low = Ask("low descriptors of host").m_reason;
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        EXPECT_EQ(fcntl(descriptor, F_GETFD), -1) << "left open: " << descriptor;
        dup2(saved[descriptor], descriptor);
    }
    EXPECT_EQ(answer.m_values.m_server, u"bi-changed");
    EXPECT_THAT(error, HasSubstr("no message"));
    EXPECT_EQ(low, "") << "used by the bridge: the host's own output would go there";
}

TEST(EditorProcess, WorksInAHostThatIgnoresTheEndOfChildren) {
    signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(Ask("ok").m_values.m_server, u"bi-changed");
    EXPECT_THAT(ErrorOf("end"), HasSubstr(" ended before it answered."));
    EXPECT_THAT(ErrorOf("leave socket"), HasSubstr(" ended before it answered."));
}

TEST(EditorProcess, WorksInAHostThatReapsEveryChild) {
    struct sigaction action {};
    action.sa_handler = [](int) {
        const int error = errno;
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        errno = error;
    };
    sigaction(SIGCHLD, &action, nullptr);
    EXPECT_EQ(Ask("ok").m_values.m_server, u"bi-changed");
    EXPECT_THAT(ErrorOf("leave socket"), HasSubstr(" before it answered."));
}

TEST(EditorProcess, WorksWhileSignalsInterruptTheHost) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval every{{0, 300}, {0, 300}};
    setitimer(ITIMER_REAL, &every, nullptr);
    DialogValues values = Values();
    values.m_server = std::u16string(1 << 19, u'x');
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(Ask("ok", values).m_values.m_server->size(), values.m_server->size() + 8);
        EXPECT_EQ(Ask("byte by byte").m_kind, EditorMessageKind::CANCEL);
    }
}

TEST(EditorProcess, ManyThreadsShowEditorsAtOnce) {
    setenv("FAKE_EDITOR", "ok", 1);
    std::atomic<int> answers{0};
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&answers, i] {
            DialogValues values = Values();
            values.m_server = std::u16string(static_cast<std::size_t>(1000 * i), u'x');
            for (int j = 0; j < 5; ++j) {
                const EditorMessage answer = RunEditor(FAKE_EDITOR_PROGRAM, ShowRequest(values));
                answers += answer.m_values.m_server == *values.m_server + u"-changed" ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(answers, 40);
    EXPECT_TRUE(HasNoChildren());
}

}  // namespace
}  // namespace Veltrane::ODBC
