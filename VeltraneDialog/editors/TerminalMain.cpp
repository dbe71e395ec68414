#include <fcntl.h>
#include <langinfo.h>
#include <slang.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>

#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/editors/EditorMain.h"
#include "VeltraneDialog/editors/TerminalForm.h"
#include "VeltraneDialog/editors/TerminalScreen.h"
#include "VeltraneDialog/editors/Texts.h"

namespace Veltrane::ODBC {

namespace {

/// Makes the terminal standard input and output, which the form uses.
void TakeTerminal() {
    const Orska::Support::FileDescriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC));
    if (terminal.Get() < 0) {
        throw EditorUnavailable(std::string("The terminal cannot be used: ") +
                                Orska::Support::DescribeLastError());
    }
    dup2(terminal.Get(), STDIN_FILENO);
    dup2(terminal.Get(), STDOUT_FILENO);
}

/// newt would terminate the process for an unknown terminal.
void CheckTerminalType() {
    const char* const variable = std::getenv("TERM");
    std::string type = variable != nullptr ? variable : "";
    if (type.empty()) {
        throw EditorUnavailable("The terminal cannot show a form: TERM is not set to its type");
    }
    if (SLtt_initialize(type.data()) != 0) {
        throw EditorUnavailable("The terminal cannot show a form: its type " + type +
                                " is unknown or too simple");
    }
}

/// The driver manager's names are UTF-8, so the form needs UTF-8 even if no locale is set.
void TakeUtf8() {
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) {
        setlocale(LC_CTYPE, "C.UTF-8");
    }
}

void PrepareTerminal() {
    TakeTerminal();
    CheckTerminalType();
    TakeUtf8();
}

bool ShowInTerminal(DialogValues& io_values, HostConnection& io_host) {
    PrepareTerminal();
    return TerminalForm(io_values, io_host.Descriptor()).Run();
}

bool AskInTerminal(const std::string& in_question, HostConnection& io_host) {
    PrepareTerminal();
    return AskQuestion(in_question, io_host.Descriptor());
}

}  // namespace

}  // namespace Veltrane::ODBC

int main(int in_argumentCount, char** in_arguments) {
    using namespace Veltrane::ODBC;
    return EditorMain(in_argumentCount, in_arguments, {ShowInTerminal, AskInTerminal});
}
