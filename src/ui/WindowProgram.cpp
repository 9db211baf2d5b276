#include "ui/WindowProgram.h"

#include "app/AppContext.h"
#include "ui/MainWindow.h"
#include "ui/Translations.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>

#ifdef TRANSLATOR_HAVE_X11
#include <X11/Xlib.h>
#endif

namespace ui {

namespace {

bool WaylandReachable() {
    const QString name = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (name.isEmpty())
        return false;
    const QString socket = QDir::isAbsolutePath(name)
                               ? name
                               : qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1Char('/') + name;
    if (!QFileInfo::exists(socket))
        return false;
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) +
                       QStringLiteral("/platforms"));
    return !plugins.entryList({QStringLiteral("*qwayland*")}, QDir::Files).isEmpty();
}

} // namespace

bool DisplayReachable(const QStringList& arguments, QString& why) {
#if !defined(Q_OS_UNIX) || defined(Q_OS_MACOS)
    // These systems always have their own display.
    Q_UNUSED(arguments);
    Q_UNUSED(why);
    return true;
#else
    // A platform chosen on the command line is the user's choice, left to the application.
    for (const QString& argument : arguments.mid(1))
        if (argument == QLatin1String("-platform") || argument == QLatin1String("--platform"))
            return true;
    const QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    // Platforms other than X draw somewhere of their own (offscreen, VNC, a frame buffer).
    if (!platform.isEmpty() && !platform.startsWith(QLatin1String("xcb")))
        return true;
    // A Wayland session the application can draw in: its socket is there, and so is the
    // platform plugin that speaks to it. A stale variable alone would make Qt abort.
    if (platform.isEmpty() && WaylandReachable())
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
#endif
}

int RunWindow(int& argc, char** argv) {
    QApplication application(argc, argv);
    SetUpApplication(application);
    // Read after the application has removed its own options (-style, -platform...).
    const QString file = QApplication::arguments().value(1);
    app::AppContext context;
    context.versionInfo.Load(); // for the about box; a failure leaves its lines empty
    MainWindow window(context);
    // The file named is opened first: when it cannot be, its message has been shown and the
    // program ends, the window never shown.
    if (!file.isEmpty() && !window.OpenFile(file))
        return context.exitCode;
    window.show();
    const int status = QApplication::exec();
    return status != 0 ? status : context.exitCode;
}

} // namespace ui
