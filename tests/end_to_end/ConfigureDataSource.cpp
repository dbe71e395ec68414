/// A program that configures a data source: one call of SQLConfigDataSource with a parent window,
/// for the tests that drive the editors by keys.
///
///     configure_data_source FILE add|config [key=value ...]
///
/// After the call it writes the result and the installer's errors to the file. The call runs in its
/// own thread. Meanwhile SIGUSR1 makes the program fork, with a child that only waits, and SIGUSR2
/// cancels the thread.
#include <odbcinst.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

std::string Attributes(int in_count, char** in_arguments) {
    std::string list;
    for (int i = 0; i < in_count; ++i) {
        list += in_arguments[i];
        list += '\0';
    }
    return list + '\0';
}

void WriteErrors(std::FILE* in_file) {
    for (WORD i = 1; i <= 8; ++i) {
        DWORD code = 0;
        char text[4096] = "";
        WORD length = 0;
        const RETCODE result = SQLInstallerError(i, &code, text, sizeof text, &length);
        if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO) {
            return;
        }
        std::fprintf(in_file, "error %u %s\n", static_cast<unsigned>(code), text);
    }
}

struct Call {
    WORD m_request;
    std::string m_attributes;
    BOOL m_result = 0;
};

void* MakeCall(void* io_call) {
    Call& call = *static_cast<Call*>(io_call);
    // The handle must not be used, so it points nowhere.
    HWND window = reinterpret_cast<HWND>(1);
    call.m_result =
        SQLConfigDataSource(window, call.m_request, "Veltrane", call.m_attributes.c_str());
    pthread_testcancel();
    return io_call;
}

/// @return true if the thread was cancelled
bool MakeCallOnThread(Call& io_call) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    sigaddset(&signals, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    pthread_t thread{};
    pthread_create(&thread, nullptr, MakeCall, &io_call);
    void* end = nullptr;
    while (pthread_tryjoin_np(thread, &end) != 0) {
        const timespec step{0, 20'000'000};
        const int number = sigtimedwait(&signals, nullptr, &step);
        if (number == SIGUSR2) pthread_cancel(thread);
        while (number == SIGUSR1 && fork() == 0) pause();
    }
    return end == PTHREAD_CANCELED;
}

}  // namespace

int main(int in_argumentCount, char** in_arguments) {
    if (in_argumentCount < 3) {
        return 2;
    }
    const bool isAdd = std::strcmp(in_arguments[2], "add") == 0;
    Call call{static_cast<WORD>(isAdd ? ODBC_ADD_DSN : ODBC_CONFIG_DSN),
              Attributes(in_argumentCount - 3, in_arguments + 3)};
    const bool isCancelled = MakeCallOnThread(call);
    const std::string name = std::string(in_arguments[1]) + ".part";
    std::FILE* const file = std::fopen(name.c_str(), "w");
    if (file == nullptr) {
        return 2;
    }
    std::fprintf(file, "result %d\n", call.m_result);
    if (isCancelled) std::fputs("cancelled\n", file);
    WriteErrors(file);
    std::fclose(file);
    return std::rename(name.c_str(), in_arguments[1]) == 0 ? 0 : 2;
}
