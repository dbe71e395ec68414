#include <unistd.h>

#include <QApplication>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "VeltraneDialog/editors/ListWindow.h"
#include "VeltraneDialog/editors/Texts.h"

namespace {

/// Qt terminates the process if it finds no display.
void OnQtMessage(QtMsgType in_type, const QMessageLogContext& in_context, const QString& in_text) {
    // Process-wide: the first warning of the platform, which says more than the fatal message.
    static QString s_reason;
    const std::string_view category = in_context.category != nullptr ? in_context.category : "";
    const bool isOfPlatform = category.starts_with("qt.qpa");
    if (s_reason.isEmpty() && (isOfPlatform || in_type == QtFatalMsg)) {
        s_reason = in_text.section(QLatin1Char('\n'), 0, 0);
    }
    if (in_type == QtFatalMsg) {
        std::fprintf(stderr, "veltrane-dsn-window: The window cannot be opened: %s\n",
                     s_reason.trimmed().toLocal8Bit().constData());
        _exit(1);
    }
    if (!isOfPlatform) std::fprintf(stderr, "%s\n", in_text.toLocal8Bit().constData());
}

}  // namespace

int main(int in_argumentCount, char** in_arguments) {
    if (in_argumentCount > 1) {
        const bool isVersion = std::strcmp(in_arguments[1], "--version") == 0;
        std::fprintf(isVersion ? stdout : stderr,
                     isVersion ? "veltrane-dsn-window " VELTRANE_VERSION "\n"
                               : "veltrane-dsn-window shows the data sources of the Veltrane ODBC "
                                 "driver in a window. It accepts no arguments except --version.\n");
        return isVersion ? 0 : 2;
    }
    Veltrane::ODBC::StartTexts();
    // Editors that it starts are windows too.
    qputenv("VELTRANE_DSN_EDITOR", "desktop");
    qInstallMessageHandler(OnQtMessage);
    QApplication application(in_argumentCount, in_arguments);
    QApplication::setDesktopFileName(QStringLiteral("veltrane-dsn"));
    Veltrane::ODBC::ListWindow window;
    window.show();
    window.Reload();
    return QApplication::exec();
}
