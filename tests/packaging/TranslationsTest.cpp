// The window in German: the program's set-up reads the user's languages from the environment
// (this test runs with LANGUAGE=de), installs the embedded translation and Qt's own, and sets
// the program's icon.
#include "ui/Translations.h"
#include "app/AppContext.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QTest>

class TranslationsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void TheWindowSpeaksTheUsersLanguage() {
        ui::SetUpApplication(*qApp);
        app::AppContext context;
        ui::MainWindow window(context);
        QStringList menus;
        for (QAction* action : window.menuBar()->actions())
            menus.append(action->text());
        QVERIFY2(menus.contains(QStringLiteral("&Datei")), qPrintable(menus.join(u',')));
        QVERIFY(menus.contains(QStringLiteral("&Ansicht")));
        QCOMPARE(QApplication::windowIcon().pixmap(48, 48).isNull(), false);
    }

    void QtsOwnTextsFollow() {
        QCOMPARE(ui::InstallTranslations(*qApp, {QStringLiteral("fr-FR"), QStringLiteral("de-AT")}),
                 QStringLiteral("de_AT"));
        QCOMPARE(QCoreApplication::translate("ui", "Save &As..."),
                 QStringLiteral("Speichern &unter..."));
        // A text with its shortcut after the tab keeps the shortcut.
        QCOMPARE(QCoreApplication::translate("ui", "&Open...\tCtrl+O"),
                 QStringLiteral("Ö&ffnen...\tCtrl+O"));
        // The standard buttons of message boxes.
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"),
                 QStringLiteral("Abbrechen"));
    }

    void EnglishPreferredOverGermanStaysEnglish() {
        QVERIFY(!ui::InstallTranslations(*qApp, {QStringLiteral("de")}).isEmpty());
        // The German translators from before are removed, not left behind.
        QCOMPARE(ui::InstallTranslations(*qApp, {QStringLiteral("en-GB"), QStringLiteral("de-DE")}),
                 QString());
        QCOMPARE(QCoreApplication::translate("ui", "&File"), QStringLiteral("&File"));
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Cancel"));
    }

    void AnUntranslatedLanguageFallsBackToEnglish() {
        QCOMPARE(ui::InstallTranslations(*qApp, {QStringLiteral("sw-KE")}), QString());
        QCOMPARE(QCoreApplication::translate("ui", "&Edit"), QStringLiteral("&Edit"));
    }
};

int main(int argc, char** argv) {
    // The main window reads the profile: a temporary one, never the user's.
    QTemporaryDir home;
    const QByteArray base = home.path().toLocal8Bit();
    qputenv("XDG_CONFIG_HOME", base + "/config");
    qputenv("XDG_DATA_HOME", base + "/data");
    QApplication application(argc, argv);
    TranslationsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "TranslationsTest.moc"
