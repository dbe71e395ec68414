#include "VeltraneDialog/editors/EditorMain.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <exception>

#include "VeltraneDialog/editors/Texts.h"

namespace Veltrane::ODBC {

namespace {

constexpr int STATUS_NO_ANSWER = 1;
constexpr int STATUS_USAGE = 2;

bool IsStartedByHost() {
    struct stat status {};
    return fstat(STDIN_FILENO, &status) == 0 && S_ISSOCK(status.st_mode);
}

int PrintHelp(int in_argumentCount, char** in_arguments) {
    const char* const slash = std::strrchr(in_arguments[0], '/');
    const char* const name = slash != nullptr ? slash + 1 : in_arguments[0];
    if (in_argumentCount == 2 && std::strcmp(in_arguments[1], "--version") == 0) {
        std::printf("%s %s\n", name, VELTRANE_VERSION);
        return 0;
    }
    std::fprintf(
        stderr,
        "%s is started by the setup library of the Veltrane ODBC driver when a data source\n"
        "is added or configured. Run by hand, it accepts only --version.\n",
        name);
    return STATUS_USAGE;
}

EditorMessage ShowAndAnswer(HostConnection& io_host, const EditorScreen& in_screen) {
    EditorMessage message = io_host.Receive();
    const bool isQuestion = message.m_kind == EditorMessageKind::ASK;
    if (!isQuestion && message.m_kind != EditorMessageKind::SHOW) {
        throw EditorProtocolError("The host asked for neither a form nor an answer.");
    }
    message.m_kind = EditorMessageKind::CANCEL;
    try {
        const EditorQuestion& question = message.m_question;
        if (isQuestion &&
            in_screen.m_ask(TranslateWith(question.m_text, question.m_name), io_host)) {
            message.m_kind = EditorMessageKind::YES;
        } else if (!isQuestion && in_screen.m_showForm(message.m_values, io_host)) {
            message.m_kind = EditorMessageKind::OK;
        }
    } catch (const EditorUnavailable& unavailable) {
        message.m_kind = EditorMessageKind::UNAVAILABLE;
        message.m_reason = unavailable.what();
    }
    return message;
}

}  // namespace

int EditorMain(int in_argumentCount, char** in_arguments, const EditorScreen& in_screen) {
    if (in_argumentCount != 1 || !IsStartedByHost()) {
        return PrintHelp(in_argumentCount, in_arguments);
    }
    // The editor ends with its host. The socket alone does not show that the host has ended: a
    // process that the host forked meanwhile holds it open.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    // This process will hold a password: no core file, and no debugger.
    prctl(PR_SET_DUMPABLE, 0);
    try {
        StartTexts();
        HostConnection host;
        host.Send(ShowAndAnswer(host, in_screen));
        return 0;
    } catch (const std::exception& exception) {
        // The host discards this text. A script around the editor can show it.
        std::fprintf(stderr, "%s\n", exception.what());
        return STATUS_NO_ANSWER;
    }
}

}  // namespace Veltrane::ODBC
