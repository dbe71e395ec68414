#include <QApplication>
#include <cstdio>
#include <cstring>

#include "VeltraneDialog/editors/ListWindow.h"
#include "VeltraneDialog/editors/Texts.h"

int main(int in_argumentCount, char** in_arguments) {
    if (in_argumentCount > 1) {
        const bool isVersion = std::strcmp(in_arguments[1], "--version") == 0;
        std::fprintf(isVersion ? stdout : stderr,
                     isVersion ? "veltrane-dsn-window " VELTRANE_VERSION "\n"
                               : "veltrane-dsn-window shows the data sources of the Veltrane ODBC "
                                 "driver in a window. It takes no arguments but --version.\n");
        return isVersion ? 0 : 2;
    }
    Veltrane::ODBC::StartTexts();
    // The editors that it starts are windows, too.
    qputenv("VELTRANE_DSN_EDITOR", "desktop");
    QApplication application(in_argumentCount, in_arguments);
    QApplication::setDesktopFileName(QStringLiteral("veltrane-dsn"));
    Veltrane::ODBC::ListWindow window;
    window.show();
    window.Reload();
    return QApplication::exec();
}
