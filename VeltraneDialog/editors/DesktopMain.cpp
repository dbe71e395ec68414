#include <QApplication>
#include <QSocketNotifier>
#include <cstdio>
#include <string>
#include <string_view>

#include "VeltraneDialog/editors/DesktopForm.h"
#include "VeltraneDialog/editors/EditorMain.h"

namespace Veltrane::ODBC {

namespace {

/// Process-wide: set before Qt starts, read by the handler of its messages.
HostConnection* s_host = nullptr;
/// Process-wide: the first warning of the platform, which tells more than the fatal message after
/// it.
std::string s_firstWarning;

/// Qt ends the process when it finds no display; the host is told before that, so that it can try
/// the terminal.
void OnQtMessage(QtMsgType in_type, const QMessageLogContext& in_context, const QString& in_text) {
    const std::string_view category = in_context.category != nullptr ? in_context.category : "";
    if (s_firstWarning.empty() && (category.starts_with("qt.qpa") || in_type == QtFatalMsg)) {
        s_firstWarning = in_text.section(QLatin1Char('\n'), 0, 0).toStdString();
    }
    std::fprintf(stderr, "%s\n", in_text.toLocal8Bit().constData());
    if (in_type != QtFatalMsg) {
        return;
    }
    EditorMessage message;
    message.m_kind = EditorMessageKind::UNAVAILABLE;
    message.m_reason = "The desktop editor cannot open a window: " + s_firstWarning;
    try {
        s_host->Send(message);
    } catch (const std::exception&) {
        _exit(1);
    }
    _exit(0);
}

bool ShowOnDesktop(DialogValues& io_values, HostConnection& io_host) {
    s_host = &io_host;
    qInstallMessageHandler(OnQtMessage);
    char name[] = "veltrane-dsn-editor-desktop";
    char* arguments[] = {name, nullptr};
    int argumentCount = 1;
    const QApplication application(argumentCount, arguments);
    // A cursor that does not blink: an editor that nobody types in wakes neither itself nor the
    // display.
    QApplication::setCursorFlashTime(0);
    DesktopForm form(io_values);
    QSocketNotifier hostHasGone(io_host.Descriptor(), QSocketNotifier::Read);
    QObject::connect(&hostHasGone, &QSocketNotifier::activated, &form, &QDialog::reject);
    form.show();
    form.raise();
    form.activateWindow();
    return form.exec() == QDialog::Accepted;
}

}  // namespace

}  // namespace Veltrane::ODBC

int main(int in_argumentCount, char** in_arguments) {
    return Veltrane::ODBC::EditorMain(in_argumentCount, in_arguments,
                                      Veltrane::ODBC::ShowOnDesktop);
}
