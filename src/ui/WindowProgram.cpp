#include "ui/WindowProgram.h"

#include "app/AppContext.h"
#include "ui/MainWindow.h"
#include "ui/Translations.h"

#include <QApplication>

#ifdef TRANSLATOR_HAVE_X11
#include <X11/Xlib.h>
#endif

namespace ui {

bool DisplayReachable(QString& why) {
    const QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    // Platforms other than X draw somewhere of their own (offscreen, VNC, a frame buffer).
    if (!platform.isEmpty() && !platform.startsWith(QLatin1String("xcb")))
        return true;
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty()) {
        why = QStringLiteral(" (DISPLAY is not set)");
        return false;
    }
#ifdef TRANSLATOR_HAVE_X11
    // Asked before Qt is: Qt aborts the program when the display it is given does not answer.
    if (Display* x = XOpenDisplay(display.constData())) {
        XCloseDisplay(x);
        return true;
    }
    why = QStringLiteral(" (DISPLAY is %1, which does not answer)")
              .arg(QString::fromLocal8Bit(display));
    return false;
#else
    return true;
#endif
}

int RunWindow(int& argc, char** argv, const QString& file) {
    QApplication application(argc, argv);
    SetUpApplication(application);
    app::AppContext context;
    context.versionInfo.Load(); // for the about box; a failure leaves its lines empty
    MainWindow window(context);
    window.show();
    if (!file.isEmpty())
        window.OpenFile(file);
    const int status = QApplication::exec();
    return status != 0 ? status : context.exitCode;
}

} // namespace ui
