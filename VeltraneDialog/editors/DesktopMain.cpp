#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QSocketNotifier>
#include <cstdio>
#include <string>
#include <string_view>

#include "VeltraneDialog/editors/DesktopForm.h"
#include "VeltraneDialog/editors/EditorMain.h"
#include "VeltraneDialog/editors/QtText.h"

namespace Veltrane::ODBC {

namespace {

/// Process-wide: set before Qt starts, read by the handler of its messages.
HostConnection* s_host = nullptr;
/// Process-wide: the first warning of the platform, which says more than the fatal message.
std::string s_firstWarning;

/// Qt terminates the process if it finds no display. Tells the host first, so that the host can try
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
    const bool hasDisplay =
        !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    message.m_reason = "The desktop editor cannot open a window: " +
                       (hasDisplay ? s_firstWarning : "neither DISPLAY nor WAYLAND_DISPLAY is set");
    try {
        s_host->Send(message);
    } catch (const std::exception&) {
        _exit(1);
    }
    _exit(0);
}

void TellFailures(HostConnection& io_host) {
    s_host = &io_host;
    qInstallMessageHandler(OnQtMessage);
}

class Desktop {
public:
    /// Call `TellFailures` first.
    explicit Desktop(HostConnection& io_host)
        : m_application(m_argumentCount, m_arguments),
          m_hostHasGone(io_host.Descriptor(), QSocketNotifier::Read) {
        // No blinking cursor: an idle editor wakes neither itself nor the display.
        QApplication::setCursorFlashTime(0);
    }

    int Run(QDialog& io_dialog) {
        QObject::connect(&m_hostHasGone, &QSocketNotifier::activated, &io_dialog, &QDialog::reject);
        io_dialog.show();
        io_dialog.raise();
        io_dialog.activateWindow();
        return io_dialog.exec();
    }

private:
    char m_name[28] = "veltrane-dsn-editor-desktop";
    char* m_arguments[2] = {m_name, nullptr};
    int m_argumentCount = 1;
    QApplication m_application;
    QSocketNotifier m_hostHasGone;
};

bool ShowOnDesktop(DialogValues& io_values, HostConnection& io_host) {
    TellFailures(io_host);
    Desktop desktop(io_host);
    DesktopForm form(io_values);
    return desktop.Run(form) == QDialog::Accepted;
}

bool AskOnDesktop(const std::string& in_question, HostConnection& io_host) {
    TellFailures(io_host);
    Desktop desktop(io_host);
    QMessageBox box;
    box.setIcon(QMessageBox::Question);
    box.setWindowTitle(QStringLiteral("Veltrane"));
    box.setTextFormat(Qt::PlainText);
    box.setText(QString::fromStdString(in_question));
    const QAbstractButton* const yes = box.addButton(Translated(TEXT_YES), QMessageBox::AcceptRole);
    QPushButton* const no = box.addButton(Translated(TEXT_NO), QMessageBox::RejectRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    desktop.Run(box);
    return box.clickedButton() == yes;
}

}  // namespace

}  // namespace Veltrane::ODBC

int main(int in_argumentCount, char** in_arguments) {
    using namespace Veltrane::ODBC;
    return EditorMain(in_argumentCount, in_arguments, {ShowOnDesktop, AskOnDesktop});
}
